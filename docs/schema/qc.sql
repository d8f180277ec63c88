-- SPDX-License-Identifier: MIT
-- Quality-control database, version 3.

-- target values of a material for each measured item and instrument
create table info (
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
);
create index info_index on info(reagentId, itemId, subitemId, instrId);

-- control results
create table qc (
    id integer primary key,
    infoId integer,
    date date,
    time time,
    result real,
    flag integer,
    remark text
);

-- lots of control material; reagentId is the material's row in the profile database
create table reagent (
    id integer primary key,
    reagentId integer,
    fileNo integer,
    name text,
    lotsNum text,
    expireDate date,
    level text
);
create index reagent_index on reagent(fileNo, lotsNum, reagentId);

-- control rules of a file number, item and instrument: 0 off, 1 warn, 2 stop
-- checkMethod: 0 Levey-Jennings, 1 the second method
create table subsetting (
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
);

create table version (
    version integer
);
