// SPDX-License-Identifier: MIT
#include "coagulation/report/sha256.h"

#include <nettle/sha2.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace coagulation::report {

struct Sha256::State {
    sha256_ctx hash{};
};

Sha256::Sha256()
    : state(std::make_unique<State>())
{
    sha256_init(&state->hash);
}

Sha256::~Sha256() = default;

void Sha256::add(const QByteArray &bytes)
{
    // NOLINTNEXTLINE(*-reinterpret-cast): the same bytes, which Nettle calls unsigned
    const auto *data = reinterpret_cast<const std::uint8_t *>(bytes.constData());
    sha256_update(&state->hash, static_cast<std::size_t>(bytes.size()), data);
}

QByteArray Sha256::result()
{
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
    sha256_digest(&state->hash, digest.size(), digest.data());
    QByteArray bytes(SHA256_DIGEST_SIZE, '\0');
    std::copy(digest.begin(), digest.end(), bytes.begin());
    return bytes.toHex();
}

} // namespace coagulation::report
