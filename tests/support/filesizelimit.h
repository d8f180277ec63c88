// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#ifdef Q_OS_UNIX

#include <csignal>
#include <sys/resource.h>

/// Refuses this process all writing beyond a size, as a full disk does, as long as it lives.
class FileSizeLimit {
public:
    explicit FileSizeLimit(qint64 bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit{static_cast<rlim_t>(bytes), before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before); }
    Q_DISABLE_COPY_MOVE(FileSizeLimit)

private:
    rlimit before{};
};

#endif
