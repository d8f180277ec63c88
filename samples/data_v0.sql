-- SPDX-License-Identifier: MIT
-- Data database of the oldest layout: no version, one row for each result, times with fractions.

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
    barcode text
);
create index patient_index on patient(date, sampleNo);
insert into patient values
    (1, '0001', '2016-05-09', '08:01:02.345', '王芳',      '女', '45岁', '心内科', '李伟',    '房颤',       '690123450001'),
    (2, '0002', '2016-05-09', '08:03:04',     'O''Neill',  '男', '61',   'ICU',    'Dr. Ho',  '"DVT", left', '690123450002'),
    (3, '0003', '2016-05-09', '',             '',          '',   '',     '',       null,      null,         ''),
    (5, '0001', '2016-05-10', '07:59:59.999', '赵.敏',     '女', '3月',  '儿科',   '李伟',    '术前; 待查',  null),
    (8, '0002', '2016-05-10', null,           null,        null, null,   null,     null,      null,         null);

create table patientExtra (
    id integer primary key,
    patientId integer references patient,
    name text,
    value text
);
insert into patientExtra values
    (1, 1, '床号', '12-3'),
    (2, 1, '病区', 'A'),
    (3, 2, 'bed', '7'),
    (4, 5, '监护人', '赵''先生');

-- what is to be measured on a sample
create table exam (
    id integer primary key,
    sampleNo text,
    date date,
    item text
);
insert into exam values
    (1, '0001', '2016-05-09', 'PT'),
    (2, '0001', '2016-05-09', 'APTT'),
    (3, '0002', '2016-05-09', 'DD'),
    (4, '0001', '2016-05-10', 'PT'),
    (5, '0002', '2016-05-10', 'FIB');

create table result (
    id integer primary key,
    patientId integer references patient,
    item text,
    subitem text,
    abbr text,
    code text,
    result real,
    unit text,
    flag integer,
    displayOrder integer,
    lowerMarkLimit real,
    upperMarkLimit real
);
create index result_index on result(patientId, item, subitem);
insert into result values
    (1,  1, 'PT',   'T',   'PT',     '凝血酶原时间', 12.3,  's',     0, 1, 9.0,  14.0),
    (2,  1, 'PT',   'INR', 'PT-INR', '国际标准化比值', 1.07, null,   0, 2, 0.8,  1.2),
    (3,  1, 'APTT', 'T',   'APTT',   '活化部分凝血活酶时间', 31, 's', 0, 3, 20,   40),
    (4,  2, 'PT',   'T',   'PT',     'Prothrombin time', 58.75, 's', 3, 1, 9.0,  14.0),
    (5,  2, 'DD',   'P',   'DD',     'D-Dimer',      0.1,   'mg/l',  1, 9, 0,    0.55),
    (6,  2, 'FIB',  'P',   'FIB',    'Fibrinogen',   null,  'g/l',   8, 5, 2.0,  4.0),
    (9,  5, 'PT',   'T',   'PT',     '凝血酶原时间', 13,    's',     0, 1, 9.0,  14.0),
    (12, 5, 'TT',   'T',   'TT',     'TT''s "code"', '-',   's',     null, null, null, null);

-- the measured curves, as the instrument sent them
create table curve (
    id integer primary key,
    patientId integer references patient,
    item text,
    curve blob
);
insert into curve values
    (1, 1, 'PT',   x'00010203040506070809ff'),
    (2, 1, 'APTT', x''),
    (3, 2, 'PT',   x'27273b2d2d0a00c328'),
    (4, 5, 'PT',   x'00'),
    (7, 5, 'TT',   null),
    (8, 2, 'DD',   zeroblob(120));

create table department (id integer primary key, name text);
insert into department values (1, '心内科'), (2, 'ICU'), (5, '儿科');

create table sex (id integer primary key, abbr text, name text);
insert into sex values (1, 'm', '男'), (2, 'F', '女'), (3, null, '');

create table treatmentRoom (id integer primary key, abbr text, name text);
insert into treatmentRoom values (1, 'tr1', '第一诊室'), (2, 'TR2', 'Room "2"');

create table diagnosis (id integer primary key, abbr text, name text);
insert into diagnosis values (1, 'fc', '房颤'), (2, 'DVT', 'Deep vein thrombosis, patient''s left leg');

create table doctor (id integer primary key, abbr text, name text);
create index doctor_index on doctor(abbr);
insert into doctor values (1, 'lw', '李伟'), (2, 'ho', 'Dr. Ho');

create table operator (id integer primary key, name text);
insert into operator values (1, '张丽'), (2, 'admin');

create trigger on_delete_patient after delete on patient
begin
    delete from result where old.id = result.patientId;
    delete from patientExtra where old.id = patientExtra.patientId;
end;
