-- SPDX-License-Identifier: MIT
-- What vardo does to a quality-control database of version 2, as statements for the sqlite3 shell: the
-- same ones, in the same order, in one transaction and with the same settings. Copied by hand;
-- scripts/benchmark compares the two databases.

pragma legacy_alter_table = on;
pragma foreign_keys = off;
begin immediate;
pragma integrity_check(1);

create table info_new(
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
insert into info_new (id, reagentId, itemId, subitemId, item, subitem, unit, x, sul, ul, xmean, ll, sll)
    select id, reagentId, itemId, subitemId, item, subitem, unit, x, sul, ul, xmean, ll, sll
    from info not indexed;
drop table info;
alter table info_new rename to info;
drop index if exists info_index;
create index info_index on info(reagentId, itemId, subitemId, instrId);

create table subsetting_new(
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
insert into subsetting_new (id, fileNo, subitemId, x, sul, ul, xmean, ll, sll, rule1_2s, rule1_3s, rule2_2s)
    select id, fileNo, subitemId, x, sul, ul, xmean, ll, sll, rule1_2s, rule1_3s, rule2_2s
    from subsetting not indexed;
drop table subsetting;
alter table subsetting_new rename to subsetting;

delete from version;
insert into version values(3);
commit;
