-- SPDX-License-Identifier: MIT
-- Profile database, version 30.

-- how an assay is calibrated
-- method: 0 linear, 4 four-parameter logistic; functions of the axes: null, 'Linear' or 'Log'
create table assayCalibration (
    id integer primary key,
    assayTemplateId integer references assayTemplate,
    name text not null unique,
    method integer,
    condition text,
    caliX text,
    caliY text,
    funX text,
    funY text,
    dispX text,
    dispY text
);

-- results of an assay
-- method: 0 clotting time, 1 calibration, 2 calculation, 3 absorbance
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
    upperNormal real default 0,
    lowerReport real default 0,
    upperReport real default 0,
    lowerRepeat real default 0,
    upperRepeat real default 0,
    lowerRedilution real default 0,
    upperRedilution real default 0,
    lowerMeasurement real,
    upperMeasurement real,
    visible integer default 1
);

-- caliX to funY are not used any more
create table assayTemplate (
    id integer primary key,
    name text not null unique,
    displayName text not null unique,
    class text,
    displayOrder integer,
    caliX text,
    caliY text,
    funX text,
    funY text
);
create trigger afterDeleteAssayTemplate after delete on assayTemplate
begin
    delete from variable where variable.assayTemplateId = old.id;
    delete from assayItem where assayItem.assayTemplateId = old.id;
    delete from dataCheck where dataCheck.assayTemplateId = old.id;
end;

-- curves in use, one for each instrument and calibration
create table currentCurve (
    id integer primary key,
    instrUuid text,
    name text,
    curveId integer references curve,
    unique(instrUuid, name) on conflict replace
);

-- standard curves; valid: null or 0 invalid
create table curve (
    id integer primary key,
    name text not null,
    xUnit text,
    yUnit text,
    correlation real,
    date date,
    xFun integer,
    yFun integer,
    a real,
    b real,
    c real,
    d real,
    e real,
    valid integer,
    instrUuid text,
    lotsNum text,
    expirationDate date
);
create trigger deleteCurve after delete on curve
begin
    delete from curvePoint where curvePoint.curveId = old.id;
    delete from curveVariable where curveVariable.curveId = old.id;
    delete from curveReagent where curveReagent.curveId = old.id;
    delete from curveInfo where curveInfo.curveId = old.id;
    delete from currentCurve where currentCurve.curveId = old.id;
end;

-- how a curve was measured, for support
create table curveInfo (
    curveId integer references curve,
    name text not null,
    value,
    unique (curveId, name) on conflict replace
);

-- points of a curve; z: the curve's y at x
create table curvePoint (
    id integer primary key,
    curveId integer references curve,
    x real,
    y real,
    z real,
    flags integer
);

-- lots of the reagents that a curve was measured with
create table curveReagent (
    curveId integer references curve,
    name text,
    lot text
);

-- values of the variables that a curve was measured with
create table curveVariable (
    curveId integer references curve,
    name text,
    value real
);

-- checks of an assay's results
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

-- settings
create table profile (
    name text primary key,
    value
);

create table reagent (
    id integer primary key,
    reagentId,
    type integer references reagentType,
    name text not null unique,
    initVolume integer,
    alarmLimit integer,
    vialType integer
);
create unique index reagent_index_reagentId on reagent (reagentId);

create table reagentType (
    id integer primary key,
    name text
);

create table user (
    id integer primary key,
    name text unique COLLATE NOCASE,
    password text,
    level integer default 0,
    hide integer default 0
);

-- values that an assay's expressions name
create table variable (
    id integer primary key,
    assayTemplateId integer references assayTemplate,
    name text,
    value,
    unique(assayTemplateId, name)
);

create table version (
    version integer
);
