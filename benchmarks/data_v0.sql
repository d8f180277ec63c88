-- SPDX-License-Identifier: MIT
-- Makes a data database of the oldest layout: :patients patients, each with 5 results and 3 curves of
-- 120 bytes. The same :seed makes the same rows. To be run from the project's root:
--   sqlite3 -cmd '.param set :patients 10000' -cmd '.param set :seed 1' data.db '.read benchmarks/data_v0.sql'

.bail on
pragma synchronous = off; -- of this connection alone
.read samples/data_v0.sql
begin;
delete from exam;
delete from patient;
delete from patientExtra;
delete from result;
delete from curve;

-- 30 samples a day; most times with a fraction of a second
insert into patient (id, sampleNo, date, time, name, sex, age, department, doctor, diagnosis, barcode)
with recursive patients(id, random) as (
    select 1, :seed
    union all
    select id + 1, (random * 1103515245 + 12345) & 0x7fffffff from patients where id < :patients
)
select id, printf('%04d', (id - 1) % 30 + 1), date('2016-01-01', '+' || ((id - 1) / 30) || ' days'),
    printf('%02d:%02d:%02d', 7 + id % 30 / 3, (random >> 8) % 60, (random >> 14) % 60)
        || iif((random >> 20) % 8, printf('.%03d', (random >> 10) % 1000), ''),
    printf('Patient %d', random), iif((random >> 16) % 2, '男', '女'), (random >> 12) % 90 || '岁',
    iif((random >> 18) % 3, '心内科', 'ICU'), iif((random >> 19) % 5, '李伟', 'Dr. Ho'),
    iif((random >> 17) % 4, null, '房颤'), printf('69%010d', id)
from patients;

insert into result (patientId, item, subitem, abbr, code, result, unit, flag, displayOrder,
    lowerMarkLimit, upperMarkLimit)
with recursive rows(row, random) as (
    select 0, :seed + 1
    union all
    select row + 1, (random * 1103515245 + 12345) & 0x7fffffff from rows where row < 5 * :patients - 1
), test(number, item, subitem, abbr, code, unit, low, high) as (values
    (0, 'PT', 'T', 'PT', '凝血酶原时间', 's', 9.0, 14.0),
    (1, 'PT', 'INR', 'PT-INR', '国际标准化比值', null, 0.8, 1.2),
    (2, 'APTT', 'T', 'APTT', '活化部分凝血活酶时间', 's', 20.0, 40.0),
    (3, 'FIB', 'P', 'FIB', 'Fibrinogen', 'g/l', 2.0, 4.0),
    (4, 'DD', 'P', 'DD', 'D-Dimer', 'mg/l', 0.0, 0.55)
)
select row / 5 + 1, item, subitem, abbr, code, low + (high - low) * (random >> 8) / 8388608,
    unit, (random >> 16) % 4, number, low, high
from rows cross join test on number = row % 5;

insert into curve (patientId, item, curve)
with recursive rows(row, random) as (
    select 0, :seed + 2
    union all
    select row + 1, (random * 1103515245 + 12345) & 0x7fffffff from rows where row < 3 * :patients - 1
)
select row / 3 + 1, iif(row % 3 = 0, 'PT', iif(row % 3 = 1, 'APTT', 'FIB')),
    cast(printf('%030d%030d%030d%030d', random, random * 7919, row, random * 104729) as blob)
from rows;
commit;
