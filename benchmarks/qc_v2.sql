-- SPDX-License-Identifier: MIT
-- Makes a quality-control database of version 2: :targets target values, 50 a lot of control material.
-- The same :seed makes the same rows. To be run from the project's root:
--   sqlite3 -cmd '.param set :targets 10000' -cmd '.param set :seed 1' qc.db '.read benchmarks/qc_v2.sql'

.bail on
pragma synchronous = off; -- of this connection alone
.read samples/qc_v0.sql
begin;
delete from reagent;
delete from info;
delete from subsetting;
delete from qc;

alter table reagent add level text;
drop index reagent_index;
create index reagent_index on reagent(fileNo, lotsNum, reagentId);
create table version(version integer);
insert into version values (2);

insert into reagent (reagentId, fileNo, name, lotsNum, expireDate)
with recursive lots(lot) as (
    select 1 union all select lot + 1 from lots where lot < (:targets + 49) / 50
)
select 20 + lot % 4, lot, '质控血浆 正常', printf('N%05d', lot),
    date('2016-01-31', '+' || lot || ' days')
from lots;

insert into info (reagentId, itemId, subitemId, item, subitem, unit, x, sul, ul, xmean, ll, sll)
with recursive targets(target, random) as (
    select 0, :seed
    union all
    select target + 1, (random * 1103515245 + 12345) & 0x7fffffff from targets
    where target < :targets - 1
)
select target / 50 + 1, target % 50 / 2 + 1, target % 50 + 1, printf('T%02d', target % 50 / 2 + 1),
    iif(target % 2, 'P', 'T'), iif(target % 2, 'g/l', 's'), (random >> 16) % 2,
    mean * 1.2, mean * 1.1, mean, mean * 0.9, mean * 0.8
from (select target, random, 10 + (random >> 8) / 100000.0 as mean from targets);
commit;
