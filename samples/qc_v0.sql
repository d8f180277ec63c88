-- SPDX-License-Identifier: MIT
-- Quality-control database of the oldest layout: no version, no levels, no instruments.

-- lots of control material; reagentId is the material's row in the profile database
create table reagent (
    id integer primary key,
    reagentId integer,
    fileNo integer,
    name text,
    lotsNum text,
    expireDate date
);
create index reagent_index on reagent(fileNo);
insert into reagent values
    (1, 21, 1, '质控血浆 正常', 'N1603', '2017-03-31'),
    (2, 22, 2, 'Control "pathological"', 'P1603', '2017-03-31'),
    (4, 21, 3, '质控血浆 正常', '', null);

-- target values of a material for each measured item
create table info (
    id integer primary key,
    reagentId integer references reagent,
    itemId integer,
    subitemId integer,
    item text,
    subitem text,
    unit text,
    x integer,
    sul real,
    ul real,
    xmean real,
    ll real,
    sll real
);
create index info_index on info(reagentId, itemId);
insert into info values
    (1, 1, 1, 1, 'PT',   'T', 's',   1,    15.5, 14.5, 12.5, 10.5, 9.5),
    (2, 1, 2, 4, 'APTT', 'T', 's',   0,    40,   38,   32,   26,   24),
    (3, 2, 1, 1, 'PT',   'T', 's',   null, null, null, 45.1, null, null),
    (7, 4, 3, 6, 'FIB',  'P', 'g/l', 1,    4.01, 3.8,  3.2,  2.6,  2.41);

-- control rules of a file number and item
create table subsetting (
    id integer primary key,
    fileNo integer,
    subitemId integer,
    x integer,
    sul real,
    ul real,
    xmean real,
    ll real,
    sll real,
    rule1_2s integer,
    rule1_3s integer,
    rule2_2s integer
);
insert into subsetting values
    (1, 1, 1, 1, 15.5, 14.5, 12.5, 10.5, 9.5, 1, 2, 0),
    (2, 1, 4, 0, null, null, null, null, null, 0, 0, 0),
    (3, 2, 1, 1, 50, 48, 45.1, 42, 40, 1, 2, 2),
    (5, 1, 1, 1, 15.9, 14.9, 12.9, 10.9, 9.9, 2, 2, 1);

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
insert into qc values
    (1, 1, '2016-05-09', '07:45:10.500', 12.6, 0, null),
    (2, 1, '2016-05-10', '07:44:59',     14.9, 1, '超过 2.0 s; 已复查'),
    (3, 2, '2016-05-10', '07:46:01.',    31.7, 0, ''),
    (4, 7, '2016-05-10', '',             3.25, 0, 'operator''s check'),
    (5, 7, null,         null,           null, null, null);
