// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

/// \return an input as the fuzzer hands it to a target
inline QByteArray inputBytes(const quint8 *data, std::size_t size)
{
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): Qt's bytes are char
    return {reinterpret_cast<const char *>(data), qsizetype(size)};
}
