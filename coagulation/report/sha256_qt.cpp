// SPDX-License-Identifier: MIT
#include "coagulation/report/sha256.h"

#include <QCryptographicHash>

namespace coagulation::report {

struct Sha256::State {
    QCryptographicHash hash{QCryptographicHash::Sha256};
};

Sha256::Sha256()
    : state(std::make_unique<State>())
{
}

Sha256::~Sha256() = default;

void Sha256::add(const QByteArray &bytes)
{
    state->hash.addData(bytes);
}

QByteArray Sha256::result()
{
    return state->hash.result().toHex();
}

} // namespace coagulation::report
