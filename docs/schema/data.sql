-- SPDX-License-Identifier: MIT
-- Data database, version 12.

-- the version of a result that counts
create table checkedResult (
    id integer primary key,
    patientId integer references patient,
    item text,
    subitem text,
    resultsId integer references results,
    unique(patientId, item, subitem) on conflict replace
);
create index checkedResult_index on checkedResult(patientId, item, subitem);

-- measured curves, as the instrument sent them, of each version of a result
create table curve (
    id integer primary key,
    patientId integer references patient,
    item text,
    version integer,
    curve blob,
    deletedAt datetime
);

-- lookup list
create table department (
    id integer primary key,
    abbr text COLLATE NOCASE,
    name text
);
create index department_index on department (abbr);

-- details of a test, of each version of a result
create table detail (
    id integer primary key,
    patientId integer references patient,
    item text,
    version integer,
    info text,
    deletedAt datetime
);

-- lookup list
create table diagnosis (
    id integer primary key,
    abbr text COLLATE NOCASE,
    name text
);
create index diagnosis_index on diagnosis (abbr);

-- lookup list
create table doctor (
    id integer primary key,
    abbr text COLLATE NOCASE,
    name text,
    department text
);
create index doctor_index on doctor (abbr);

-- what is to be measured on a sample
create table exam (
    id integer primary key,
    sampleNo text,
    date date,
    item text
);

-- lookup list: remarks
create table memo (
    id integer primary key,
    abbr text COLLATE NOCASE,
    name text
);
create index memo_index on memo (abbr);

-- lookup list
create table operator (
    id integer primary key,
    abbr text COLLATE NOCASE,
    name text
);
create index operator_index on operator (abbr);

-- one row for each sample of a day
create table patient (
    id integer primary key,
    sampleNo text,
    date date,
    time time,
    name text,
    sex text,
    age text,
    department text,
    doctor text,
    diagnosis text,
    barcode text,
    sampleType text,
    hospitalNo text,
    memo text,
    printTime datetime,
    outputTime datetime,
    sampleTime datetime,
    testTime datetime,
    validateTime datetime,
    instrId text
);
create index patient_index on patient(date, sampleNo);
create trigger on_delete_patient after delete on patient
begin
    delete from patientExtra where old.id = patientExtra.patientId;
    delete from exam where old.sampleNo = exam.sampleNo and old.date = exam.date;
    delete from results where old.id = results.patientId;
    delete from checkedResult where old.id = checkedResult.patientId;
    delete from curve where old.id = curve.patientId;
    delete from detail where old.id = detail.patientId;
end;

-- fields of a patient that the laboratory made
create table patientExtra (
    id integer primary key,
    patientId integer references patient,
    name text,
    value text
);

-- the results that count
create view result as
select results.id, results.patientId, results.item, results.subitem, abbr, code, result, unit, flag,
    displayOrder, lowerMarkLimit, upperMarkLimit
from results, checkedResult
where results.id = checkedResult.resultsId and results.patientId = checkedResult.patientId;

-- every version of every result
create table results (
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
    upperMarkLimit real,
    deletedAt datetime
);
create index results_index on results(patientId, item, subitem);

-- requests that came by barcode
create table sampleAssayRequest (
    barcode text primary key,
    testItems text,
    patientInfo text,
    finished integer not null default 0,
    updatedTime datetime
);

-- lookup list
create table sex (
    id integer primary key,
    abbr text COLLATE NOCASE,
    name text
);
create index sex_index on sex (abbr);

-- lookup list
create table treatmentRoom (
    id integer primary key,
    abbr text COLLATE NOCASE,
    name text,
    department text
);
create index treatmentRoom_index on treatmentRoom (abbr);

create table version (
    version integer
);
