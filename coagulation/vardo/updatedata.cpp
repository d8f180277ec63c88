#include "coagulation/vardo/updatedata.h"

namespace coagulation {

UpdateData::UpdateData(QObject *parent)
    : UpdateBase(databaseFileName("%1data%2.db"), parent)
{
}

} // namespace coagulation
