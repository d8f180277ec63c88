// SPDX-License-Identifier: MIT
#include "coagulation/vardo/updateqc.h"

namespace coagulation {

UpdateQc::UpdateQc(QObject *parent)
    : UpdateBase(databaseFileName("%1qc%2.db"), parent)
{
}

bool UpdateQc::update_v1()
{
    if (!execAll({
            SQL("create table version(version integer)"),
            SQL(R"(create table reagent_new(
    id integer primary key,
    reagentId integer,
    fileNo integer,
    name text,
    lotsNum text,
    expireDate date,
    level text
))"),
        })
        || !rebuildTable("reagent_new", "reagent"))
        return false;

    // without its index the table is slower, but complete
    tryAll({
        SQL("drop index if exists reagent_index"),
        SQL("create index reagent_index on reagent(fileNo, lotsNum, reagentId)"),
    });
    return true;
}

bool UpdateQc::update_v2()
{
    return removeDecimals("qc", {"time"});
}

bool UpdateQc::update_v3()
{
    // checkMethod: 0 Levey-Jennings, 1 the second method
    // rules: 0 off, 1 warn, 2 stop
    return execAll({SQL(R"(create table info_new(
    id integer primary key,
    reagentId integer references reagent,
    itemId integer,
    subitemId integer,
    instrId text default 'wb1',
    item text,
    subitem text,
    unit text,

    x integer default 0,
    sul real,
    ul real,
    xmean real,
    ll real,
    sll real,

    lj integer default 0,
    mean real,
    sd real
))")}) && rebuildTable("info_new", "info")
        && execAll({
            SQL("drop index if exists info_index"),
            SQL("create index info_index on info(reagentId, itemId, subitemId, instrId)"),
            SQL(R"(create table subsetting_new(
    id integer primary key,
    fileNo integer,
    subitemId integer,
    instrId text default 'wb1',
    execCheck integer default 1,
    checkMethod integer default 0,

    x integer default 0,
    sul real,
    ul real,
    xmean real,
    ll real,
    sll real,

    lj integer default 0,
    mean real,
    sd real,

    rule1_2s integer default 1,
    rule1_3s integer default 2,
    rule2_2s integer default 0,
    rule4_1s integer default 0,
    ruleR_4s integer default 0,
    rule10x integer default 0,
    unique (fileNo, subitemId, instrId) on conflict replace
))"),
        })
        && rebuildTable("subsetting_new", "subsetting");
}

} // namespace coagulation
