#include "coagulation/vardo/updateqc.h"

namespace coagulation {

UpdateQc::UpdateQc(QObject *parent)
    : UpdateBase(databaseFileName("%1qc%2.db"), parent)
{
}

} // namespace coagulation
