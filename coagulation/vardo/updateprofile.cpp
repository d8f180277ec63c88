#include "coagulation/vardo/updateprofile.h"

namespace coagulation {

UpdateProfile::UpdateProfile(QObject *parent)
    : UpdateBase(databaseFileName("%1profile%2.db"), parent)
{
}

} // namespace coagulation
