-- SPDX-License-Identifier: MIT
-- What vardo does to a data database of version 0, as statements for the sqlite3 shell: the same ones, in
-- the same order, in one transaction and with the same settings. vardo itself leaves out the update of the
-- times of results, which would change nothing here. Copied by hand; scripts/benchmark compares the two
-- databases.

pragma legacy_alter_table = on;
pragma foreign_keys = off;
begin immediate;
pragma integrity_check(1);

-- to version 1
alter table patient add sampleType text;
alter table patient add hospitalNo text;
create table department_new(id integer primary key, abbr text COLLATE NOCASE, name text);
insert into department_new (id, name) select id, name from department not indexed;
drop table department;
alter table department_new rename to department;
create index if not exists department_index on department (abbr);
create table sex_new(id integer primary key, abbr text COLLATE NOCASE, name text);
insert into sex_new (id, abbr, name) select id, abbr, name from sex not indexed;
drop table sex;
alter table sex_new rename to sex;
create index if not exists sex_index on sex (abbr);
create table treatmentRoom_new(id integer primary key, abbr text COLLATE NOCASE, name text);
insert into treatmentRoom_new (id, abbr, name) select id, abbr, name from treatmentRoom not indexed;
drop table treatmentRoom;
alter table treatmentRoom_new rename to treatmentRoom;
create index if not exists treatmentRoom_index on treatmentRoom (abbr);
create table diagnosis_new(id integer primary key, abbr text COLLATE NOCASE, name text);
insert into diagnosis_new (id, abbr, name) select id, abbr, name from diagnosis not indexed;
drop table diagnosis;
alter table diagnosis_new rename to diagnosis;
create index if not exists diagnosis_index on diagnosis (abbr);
create table doctor_new(id integer primary key, abbr text COLLATE NOCASE, name text);
insert into doctor_new (id, abbr, name) select id, abbr, name from doctor not indexed;
drop table doctor;
alter table doctor_new rename to doctor;
create index if not exists doctor_index on doctor (abbr);
create table operator_new(id integer primary key, abbr text COLLATE NOCASE, name text);
insert into operator_new (id, name) select id, name from operator not indexed;
drop table operator;
alter table operator_new rename to operator;
create index if not exists operator_index on operator (abbr);
create table detail(
    id integer primary key,
    patientId integer references patient,
    item text,
    info text,
    unique(patientId, item) on conflict replace
);
create table version(version integer);

-- to version 2
drop trigger on_delete_patient;
create trigger on_delete_patient after delete on patient
begin
    delete from exam where old.sampleNo = exam.sampleNo and old.date = exam.date;
    delete from result where old.id = result.patientId;
    delete from patientExtra where old.id = patientExtra.patientId;
    delete from curve where old.id = curve.patientId;
    delete from detail where old.id = detail.patientId;
end;

-- to version 3
create table results(
    id integer primary key,
    patientId integer references patient,
    item text,
    subitem text,
    version integer,
    abbr text,
    code text,
    date date,
    time time,
    result real,
    unit text,
    flag integer,
    displayOrder integer,
    lowerMarkLimit real,
    upperMarkLimit real
);
create index results_index on results(patientId, item, subitem);
insert into results ( id, patientId, item, subitem, version, abbr, code, result, unit,
    flag, displayOrder, lowerMarkLimit, upperMarkLimit)
    select id, patientId, item, subitem, 1, abbr, code, result, unit,
    flag, displayOrder, lowerMarkLimit, upperMarkLimit from result;
create table checkedResult(
    id integer primary key,
    patientId integer references patient,
    item text,
    subitem text,
    resultsId integer references results,
    unique(patientId, item, subitem) on conflict replace
);
create index checkedResult_index on checkedResult(patientId, item, subitem);
insert into checkedResult( patientId, item, subitem, resultsId)
    select patientId, item, subitem, id from result;
drop index result_index;
drop table result;
create table curve_new(
    id integer primary key,
    patientId integer references patient,
    item text,
    version integer,
    curve blob
);
insert into curve_new ( id, patientId, item, version, curve)
    select id, patientId, item, 1, curve from curve;
drop table curve;
alter table curve_new rename to curve;
create table detail_new(
    id integer primary key,
    patientId integer references patient,
    item text,
    version integer,
    info text
);
insert into detail_new ( id, patientId, item, version, info)
    select id, patientId, item, 1, info from detail;
drop table detail;
alter table detail_new rename to detail;
drop trigger on_delete_patient;
create trigger on_delete_patient after delete on patient
begin
    delete from patientExtra where old.id = patientExtra.patientId;
    delete from exam where old.sampleNo = exam.sampleNo and old.date = exam.date;
    delete from results where old.id = results.patientId;
    delete from checkedResult where old.id = checkedResult.patientId;
    delete from curve where old.id = curve.patientId;
    delete from detail where old.id = detail.patientId;
end;

-- to version 4
drop view if exists result;
create view result as
select results.id, results.patientId, results.item, results.subitem, abbr, code, result, unit, flag,
    displayOrder, lowerMarkLimit, upperMarkLimit
from results, checkedResult
where results.id = checkedResult.resultsId and results.patientId = checkedResult.patientId;

-- to version 5
alter table patient add memo text;
-- remarks
create table memo(
    id integer primary key,
    abbr text COLLATE NOCASE,
    name text
);
create index memo_index on memo (abbr);

-- to version 6
alter table patient add printTime datetime;
alter table patient add outputTime datetime;

-- to version 7
alter table doctor add department text;
alter table treatmentRoom add department text;

-- to version 8
alter table patient add sampleTime datetime;
alter table patient add testTime datetime;
alter table patient add validateTime datetime;

-- to version 9
update patient set
    time = iif(instr(time, '.'), substr(time, 1, instr(time, '.')-1), time),
    printTime = iif(instr(printTime, '.'), substr(printTime, 1, instr(printTime, '.')-1), printTime),
    outputTime = iif(instr(outputTime, '.'), substr(outputTime, 1, instr(outputTime, '.')-1), outputTime),
    sampleTime = iif(instr(sampleTime, '.'), substr(sampleTime, 1, instr(sampleTime, '.')-1), sampleTime),
    testTime = iif(instr(testTime, '.'), substr(testTime, 1, instr(testTime, '.')-1), testTime),
    validateTime = iif(instr(validateTime, '.'), substr(validateTime, 1, instr(validateTime, '.')-1), validateTime);
update results set
    time = iif(instr(time, '.'), substr(time, 1, instr(time, '.')-1), time);

-- to version 10
alter table patient add instrId text;

-- to version 11
alter table results add deletedAt datetime;
alter table curve   add deletedAt datetime;
alter table detail  add deletedAt datetime;

-- to version 12
create table sampleAssayRequest(
    barcode text primary key,
    testItems text,
    patientInfo text,
    finished integer not null default 0,
    updatedTime datetime
);

delete from version;
insert into version values(12);
commit;
