-- SPDX-License-Identifier: MIT
-- System log database of the oldest layout: no version, assay times with fractions of a second.

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
insert into assay values
    (1, '2016-05-09', '08:02:11.250', 'wb1', 'PT',   '20160509-0001', null),
    (2, '2016-05-09', '08:02:12',     'wb1', 'APTT', '20160509-0001', ''),
    (3, '2016-05-09', '08:04:59.999', 'wb1', 'FIB',  '20160509-0002', '急诊'),
    (4, '2016-05-09', '',             'wb1', 'TT',   '20160509-0002', 'aborted: "no clot" after 120.5 s'),
    (5, '2016-05-09', null,           'wb1', 'DD',   null,            'O''Neill, ward 3.2'),
    (6, '2016-05-10', '07:58:00.',    'wb1', 'ATIII','20160510-0001', '样本量不足.重测'),
    (7, '2016-05-10', '07:58:30.5',   'wb1', 'PT',   '20160510-0001', null);

-- Written by the analyser software; no upgrade touches it.
create table event (
    id integer primary key,
    time time,
    level integer,
    text text
);
insert into event values
    (1, '2016-05-09 07:55:00.125', 0, '开机自检通过'),
    (2, '2016-05-09 12:30:00.000', 2, 'Rinse bottle "R2" is empty');
