-- SPDX-License-Identifier: MIT
-- Profile database of the oldest layout: no version, no current curves, eight columns of a template.

create table profile (name text primary key, value);
insert into profile values
    ('FIB/report/dilution',       '1/20'),
    ('DD/mix/times',              2),
    ('DD/disable',                1),
    ('II/disable',                0),
    ('PT/disable',                0),
    ('PT/mix/times',              1),
    ('specialValue/DD/P',         0.2),
    ('analyst/odThreshold',       '4,0.3; 7,0.02'),
    ('APTT/max_clot_time',        '200'),
    ('ATIII/kinetic/start',       '10'),
    ('ATIII/max_clot_time',       100),
    ('ATIII/mix/times',           2),
    ('patient/name',              '姓名'),
    ('patient/time',              '时间'),
    ('patient/hospitalNo',        'Case no. of Dr. O''Neill'),
    ('schedule/sample',           8),
    ('print/{00000000-0000-0000-0000-000000000000}/copies', 2),
    ('program/PT/name1',          'PT'),
    ('program/PT/reagent1',       100),
    ('program/PT/volume',         50),
    ('program/APTT/name1',        'APTT'),
    ('program/APTT/name2',        'CaCl2'),
    ('program/FIB/name1',         'FIB'),
    ('program/FIB/diluent',       'Buffer(FIB)'),
    ('program/DD/name1',          'Buffer(DD)'),
    ('program/DD/name2',          'Latex'),
    ('program/DD/diluent',        'Saline'),
    ('program/FDP/name1',         'Buffer(FDP)'),
    ('program/FDP/name2',         'FDP'),
    ('program/DDplus/name1',      'Buffer(DD)'),
    ('program/ATIII/name1',       'R1(ATIII)'),
    ('program/ATIII/volume',      20);

create table user (
    id integer primary key,
    name text,
    password text,
    level integer default 0
);
insert into user values
    (1, 'admin',    '21232f297a57a5a7', 9),
    (2, '张丽',     null,               1),
    (5, 'O''Neill', '',                 null);

create table reagentType (id integer primary key, name text);
insert into reagentType values
    (0, 'Reagent'),
    (1, 'Lack of factor plasma'),
    (2, 'Buffer'),
    (3, 'Cleaning'),
    (4, 'QC'),
    (5, 'Standard substance');

create table reagent (
    id integer primary key,
    reagentId,
    type integer references reagentType,
    name text not null unique,
    initVolume integer,
    alarmLimit integer,
    vialType integer
);
insert into reagent values
    (1,  '',        0, 'PT',        4000, 300, 3),
    (2,  'A101',    0, 'APTT',      2000, 200, 3),
    (3,  'A101',    0, 'CaCl2',     4000, 200, 3),
    (4,  null,      0, 'FIB',       2000, 200, 3),
    (5,  'A101(2)', 0, 'TT',        2000, 200, 3),
    (6,  '',        2, 'Buffer',    6500, 200, 6),
    (7,  '',        0, 'Latex',     1500, 150, 3),
    (8,  null,      3, 'Rinse',     9000, 500, 6),
    (9,  '',        0, 'R1(ATIII)', 2000, 200, 3),
    (10, '',        0, 'R2(ATIII)', 2000, 200, 3),
    (11, 'S-1',     1, 'II',        1000, 200, 1),
    (12, null,      1, 'X',         1000, 200, 1),
    (13, 'S-1',     4, 'QC normal', 1000, 200, 1);

create table assayTemplate (
    id integer primary key,
    name text not null unique,
    class text,
    displayOrder integer,
    caliX text,
    caliY text,
    funX text,
    funY text
);
insert into assayTemplate values
    (1,  'PT',    null,     10,  'T', 'P', 'Log', 'Log'),
    (2,  'FIB',   null,     30,  'T', 'P', 'Log', 'Log'),
    (3,  'APTT',  null,     20,  'T', 'P', 'Log', 'Log'),
    (4,  'TT',    null,     40,  'T', 'P', 'Log', 'Log'),
    (5,  'DD',    null,     50,  'OD', 'P', 'Log', 'Linear'),
    (6,  'FDP',   null,     60,  'OD', 'P', 'Log', 'Linear'),
    (7,  'ATIII', null,     70,  'OD', 'P', null, null),
    (8,  'II',    'factor', 80,  'T', 'P', 'Log', 'Log'),
    (9,  'V',     'factor', 90,  'T', 'P', 'Log', 'Log'),
    (10, 'VII',   'factor', 100, 'T', 'P', 'Log', 'Log'),
    (11, 'X',     'factor', 110, 'T', 'P', 'Log', 'Log'),
    (12, 'VIII',  'factor', 120, 'T', 'P', 'Log', 'Log'),
    (13, 'IX',    'factor', 130, 'T', 'P', 'Log', 'Log'),
    (14, 'XI',    'factor', 140, 'T', 'P', 'Log', 'Log'),
    (15, 'XII',   'factor', 150, 'T', 'P', 'Log', 'Log');

create table assayItem (
    id integer primary key,
    assayTemplateId integer references assayTemplate,
    name text not null,
    method integer,
    unit text,
    expr text,
    precision integer default 2,
    displayOrder integer,
    abbr text,
    code text,
    lowerNormal real default 0,
    upperNormal real default 0
);
insert into assayItem values
    (1,  1, 'T',   0, 's',     null,            1, 1, 'PT-S',   '凝血酶原时间',      9,    14),
    (2,  1, 'OD',  3, 'OD',    null,            2, 2, 'PT-OD',  'Absorbency',        0,    0),
    (3,  1, 'P',   1, '%',     null,            2, 3, 'PT-%',   'Activated degree',  80,   150),
    (4,  1, 'R',   2, null,    'T/normal',      2, 4, 'PTR',    'PT ratio',          0.82, 1.15),
    (5,  1, 'INR', 2, null,    'pow(R, ISI)',   2, 5, 'PT-INR', 'INR',               0.76, 1.15),
    (6,  2, 'T',   0, 's',     null,            1, 1, 'FIB-S',  'FIB time',          0,    0),
    (7,  2, 'OD',  3, 'OD',    null,            2, 2, 'FIB-OD', 'Absorbency',        0,    0),
    (8,  2, 'P',   1, 'g/l',   null,            2, 3, 'FIB',    '纤维蛋白原',        2,    4),
    (9,  3, 'T',   0, 's',     null,            1, 1, 'APTT',   'APTT time',         20,   40),
    (10, 3, 'R',   2, null,    'T/normal',      2, 2, 'APTTR',  'APTT ratio',        0.7,  1.3),
    (11, 4, 'T',   0, 's',     null,            1, 1, 'TT',     '凝血酶时间',        14,   21),
    (12, 5, 'T',   0, 's',     null,            1, 1, 'DD-T',   'DD time',           0,    0),
    (13, 5, 'OD',  3, 'OD',    null,            2, 2, 'DD-OD',  'Absorbency',        0,    0),
    (14, 5, 'P',   1, 'mg/l',  null,            2, 3, 'DD',     '纤维蛋白降解物',    0,    0.55),
    (15, 6, 'T',   0, 's',     null,            1, 1, 'FDP-T',  'FDP time',          0,    0),
    (16, 6, 'OD',  3, 'OD',    null,            2, 2, 'FDP-OD', 'Absorbency',        0,    0),
    (17, 6, 'P',   1, 'ug/ml', null,            2, 3, 'FDP',    'FDP',               0,    5),
    (18, 7, 'T',   0, 's',     null,            1, 1, 'AT-T',   'AT time',           0,    0),
    (19, 7, 'OD',  3, 'OD',    null,            2, 2, 'AT-OD',  'Absorbency',        0,    0),
    (20, 7, 'P',   1, '%',     null,            2, 3, 'AT-%',   'Antithrombin',      80,   120),
    (21, 8, 'T',   0, 's',     null,            1, 1, 'II-S',   'Factor II',         0,    0),
    (22, 8, 'P',   1, '%',     null,            2, 2, 'II-%',   'Factor II',         70,   120),
    (90001, 1, 'my ''T''', 2, 's', 'T*2',       3, 9, 'my.PT',  'site''s own',       null, null);

create table assayCalibration (
    id integer primary key,
    assayTemplateId integer references assayTemplate,
    name text,
    method integer,
    condition text,
    caliX text,
    caliY text,
    funX text,
    funY text,
    dispX text,
    dispY text
);
insert into assayCalibration values
    (1, 1, 'PT',          0, null, 'T',  'P', 'Log', 'Log', null, null),
    (2, 1, 'PT 演算 FIB', 0, null, 'OD', 'P', null,  null,  null, null),
    (3, 2, 'FIB',         0, null, 'T',  'P', 'Log', 'Log', null, null),
    (4, 5, 'DD',          0, null, 'OD', 'P', null,  null,  null, null),
    (5, 6, 'FDP',         0, null, 'OD', 'P', null,  null,  null, null),
    (6, 7, 'ATIII',       0, null, 'OD', 'P', null,  null,  'Log', 'Log'),
    (7, 8, 'II',          0, 'T>0', 'T', 'P', 'Log', 'Log', null, null);

create table variable (
    id integer primary key,
    assayTemplateId integer references assayTemplate,
    name text,
    value,
    unique(assayTemplateId, name)
);
insert into variable values
    (1, 1, 'ISI',    null),
    (2, 1, 'normal', null),
    (3, 3, 'normal', null);

create table dataCheck (
    assayTemplateId integer unique references assayTemplate,
    report integer default 0,
    reportItemFullName text,
    reportLower real,
    reportUpper real,
    mark integer default 0,
    markItemFullName text,
    markLower real,
    markUpper real,
    redilution integer default 0,
    redilutionItemFullName text,
    redilutionLower real,
    redilutionUpper real,
    repeat integer default 0,
    repeatItemFullName text,
    repeatLower real,
    repeatUpper real,
    rep integer default 0,
    repDiff real
);
insert into dataCheck values
    (1, 1, 'PT.T', 5, 120.5, 0, null, null, null, 0, null, null, null, 1, 'PT.T', 7, 40, 0, null),
    (2, 0, 'FIB.P', null, null, 0, null, null, null, 1, 'FIB.P', 0.5, 6, 0, null, null, null, 1, 0.1),
    (8, 1, 'II', 1, 2, 0, null, null, null, 0, null, null, null, 0, null, null, null, 0, null),
    (null, 1, 'none.T', 1, 2, 0, null, null, null, 0, null, null, null, 0, null, null, null, 0, null);

create table curve (
    id integer primary key,
    name text,
    xUnit text,
    yUnit text,
    correlation real,
    date date,
    xFun integer,
    yFun integer,
    a real, b real, c real, d real, e real,
    valid integer,
    lotsNum text
);
create index curve_index on curve (name);
-- valid, to be refitted (two methods), without a calibration, not to be fitted, an older one
insert into curve values
    (1, 'PT',      's',  '%',    0.998, '2016-04-01', 1, 1, 3.1, -1.2, null, null, null, 1,    'L-1'),
    (2, 'FIB',     's',  'g/l',  0.5,   '2016-04-02', 1, 1, 9,   9,    9,    9,    9,    0,    'L-2'),
    (3, 'DD',      'OD', 'mg/l', null,  '2016-04-03', 1, 0, 0,   0,    0,    0,    0,    null, null),
    (4, 'site''s', 's',  '%',    0.25,  '2016-04-04', 0, 0, 1,   2,    3,    4,    5,    0,    'L-4'),
    (5, 'II',      's',  '%',    0.75,  '2016-04-05', 1, 1, 1,   2,    3,    4,    5,    0,    'L-5'),
    (7, 'PT',      's',  '%',    0.9,   null,         1, 1, 3.2, -1.3, null, null, null, 1,    null);

create table curvePoint (
    id integer primary key,
    curveId integer references curve,
    x real,
    y real,
    z real,
    flags integer
);
-- FIB: y = 100 / x; DD: y = 2.2 - 2 / (1 + x / 4), a logistic curve
insert into curvePoint values
    (1,  1, 12, 100, 100, 0), (2,  1, 20,  50,  50, 0), (3,  1, 34, 25, 25, 0),
    (11, 2, 5,   20, -1,  4), (12, 2, 10,  10, -1,  0), (13, 2, 25, 4,  -1, 0), (14, 2, 50, 2, -1, 0),
    (25, 3, 16, 1.8, -1,  0), (24, 3, 12, 1.7, -1,  0), (23, 3, 6, 1.4, -1, 0), (22, 3, 4, 1.2, -1, 0),
    (21, 3, 1,  0.6, -1,  0),
    (31, 4, 1,    1, -1,  0), (32, 4, 2,    2, -1,  0),
    (41, 5, 30,  50, -1,  0), (42, 5, 30,  60, -1,  2);

create table curveVariable (curveId integer references curve, name text, value real);
insert into curveVariable values
    (1, 'ISI',    1.07),
    (1, 'normal', 12),
    (2, 'ISI',    9.99);

create table curveReagent (curveId integer references curve, name text, lot text);
insert into curveReagent values
    (1, 'PT',  'L-1'),
    (2, 'FIB', 'L-2');

create trigger deleteCurve after delete on curve
begin
    delete from curvePoint where curvePoint.curveId = old.id;
end;

create trigger afterDeleteAssayTemplate after delete on assayTemplate
begin
    delete from assayItem where assayItem.assayTemplateId = old.id;
end;
