-- SPDX-License-Identifier: MIT
-- System log database, version 4.

-- assay runs
create table assay (
    id integer primary key,
    date date,
    time time,
    instrument text,
    item text,
    sampleNo text,
    remark text
);
create index assay_index on assay(date, sampleNo);

-- written by the analyser software
create table event (
    id integer primary key,
    time time,
    level integer,
    text text
);

create table maintenanceRecords (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    instrUuid TEXT NOT NULL,
    maintenanceDate DATE NOT NULL,
    recordType TEXT NOT NULL,
    maintenanceItem TEXT NOT NULL,
    recorder TEXT NOT NULL
);

create table version (
    version integer
);
