// SPDX-License-Identifier: MIT
#include "coagulation/vardo/updatesyslog.h"

namespace coagulation {

UpdateSyslog::UpdateSyslog(QObject *parent)
    : UpdateBase(databaseFileName("%1syslog%2.db"), parent)
{
}

bool UpdateSyslog::update_v1()
{
    // the table may exist already
    tryAll({SQL("create table version(version integer)")});
    return true;
}

bool UpdateSyslog::update_v3()
{
    return removeDecimals("assay", {"time"});
}

bool UpdateSyslog::update_v4()
{
    return execAll({SQL(R"(CREATE TABLE maintenanceRecords (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    instrUuid TEXT NOT NULL,
    maintenanceDate DATE NOT NULL,
    recordType TEXT NOT NULL,
    maintenanceItem TEXT NOT NULL,
    recorder TEXT NOT NULL
);)")});
}

} // namespace coagulation
