// SPDX-License-Identifier: MIT
/// Runs a fuzz target once for each file of some folders, in their order. A finding ends the program.

#include <QDir>
#include <QFile>

#include <cstdio>
#include <span>

// The names are the fuzzer's.
// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size);

namespace {

/// \return false if the file cannot be read
bool replay(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "%s: %s\n", qUtf8Printable(path), qUtf8Printable(file.errorString()));
        return false;
    }
    std::printf("%s\n", qUtf8Printable(path)); // the last one is a finding's
    std::fflush(stdout);
    const QByteArray input = file.readAll();
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the fuzzer's bytes are unsigned
    LLVMFuzzerTestOneInput(reinterpret_cast<const quint8 *>(input.constData()),
                           std::size_t(input.size()));
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    qlonglong files = 0;
    for (const char *argument : std::span(argv, std::size_t(argc)).subspan(1)) {
        const QDir folder(QFile::decodeName(argument));
        const QStringList names = folder.entryList(QDir::Files, QDir::Name);
        if (names.isEmpty()) {
            std::fprintf(stderr, "%s holds no input\n", argument);
            return 1;
        }
        for (const QString &name : names) {
            if (!replay(folder.filePath(name)))
                return 1;
        }
        files += names.size();
    }
    std::printf("%lld inputs\n", files);
    return 0;
}
