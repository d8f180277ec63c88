// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <memory>

namespace coagulation::report {

/// The SHA-256 (FIPS 180-4) of bytes that come in pieces.
///
/// Qt's function computes it, or Nettle's where that was there when this was built. Nettle uses the processor's
/// own instructions and is nine times as fast, which halves the time of a comparison of large databases.
class Sha256 {
public:
    Sha256();
    ~Sha256();
    Q_DISABLE_COPY_MOVE(Sha256)

    void add(const QByteArray &bytes);

    /// \return the hexadecimal digits; nothing can be added after it
    QByteArray result();

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace coagulation::report
