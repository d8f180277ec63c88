// SPDX-License-Identifier: MIT
/// Factory rows of version 14: ten further assays.

#include "coagulation/vardo/updateprofile.h"

// One row a line, so that columns of values can be compared.
// clang-format off

namespace coagulation {

bool UpdateProfile::update_v14()
{
    tryAll({
        SQL("insert or ignore into assaytemplate values(23, 'FM',   'FM',   null, 230, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assaytemplate values(24, 'vWF',  'vWF',  null, 240, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assaytemplate values(25, 'LMWH', 'LMWH', null, 250, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assaytemplate values(26, 'Plg',  'Plg',  null, 260, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assaytemplate values(27, 'PAI',  'PAI',  null, 270, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assaytemplate values(28, 'TAFI', 'TAFI', null, 280, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assaytemplate values(29, 'FPS',  'FPS',  null, 290, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assaytemplate values(30, 'AP',   'AP',   null, 300, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assaytemplate values(31, 'UFH',  'UFH',  null, 310, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assaytemplate values(32, 'Hep',  'Hep',  null, 320, 'T', 'P', 'Log', 'Log')"),

        SQL("insert or ignore into assayItem values(80,  23, 'T',   0, 's',      null,        1,  1, 'FM-T',    'Fibrin Monomer',                  0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(81,  23, 'OD',  3, 'OD',     null,        -1, 2, 'FM-OD',   'Absorbency',                      0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(82,  23, 'P',   1, 'ug/ml',  null,        2,  3, 'FM',      'FM',                              0, 0, 0, 0, 0, 0, 0, 0, 1)"),
        SQL("insert or ignore into assayItem values(90,  24, 'T',   0, 's',      null,        1,  1, 'vWF-T',   'von Willebrand Factor',           0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(91,  24, 'OD',  3, 'OD',     null,        -1, 2, 'vWF-OD',  'Absorbency',                      0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(92,  24, 'P',   1, '%',      null,        2,  3, 'vWF-%',   'vWF',                             0, 0, 0, 0, 0, 0, 0, 0, 1)"),
        SQL("insert or ignore into assayItem values(93,  24, 'DOD', 2, 'DOD',    null,        -1, 4, 'vWF-DOD', 'vWF DOD',                         0, 0, 0, 0, 0, 0, 0, 0, 1)"),
        SQL("insert or ignore into assayItem values(100, 25, 'T',   0, 's',      null,        1,  1, 'LMWH-T',  'Low Molecular Weight Heparin',    0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(101, 25, 'OD',  3, 'OD',     null,        -1, 2, 'LMWH-OD', 'Absorbency',                      0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(102, 25, 'P',   1, 'IU/ml',  null,        2,  3, 'LMWH',    'LMWH',                            0, 0, 0, 0, 0, 0, 0, 0, 1)"),
        SQL("insert or ignore into assayItem values(103, 25, 'R',   2, 'OD/min', 'OD/(T*60)', -1, 4, 'LMWH-R',  'Absorbency rate',                 0, 0, 0, 0, 0, 0, 0, 0, 1)"),
        SQL("insert or ignore into assayItem values(110, 26, 'T',   0, 's',      null,        1,  1, 'Plg-T',   'Plasminogen',                     0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(111, 26, 'OD',  3, 'OD',     null,        -1, 2, 'Plg-OD',  'Absorbency',                      0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(112, 26, 'P',   1, '%',      null,        2,  3, 'Plg-%',   'Plasminogen',                     0, 0, 0, 0, 0, 0, 0, 0, 1)"),
        SQL("insert or ignore into assayItem values(113, 26, 'R',   2, 'OD/min', 'OD/(T*60)', -1, 4, 'Plg-R',   'Absorbency rate',                 0, 0, 0, 0, 0, 0, 0, 0, 1)"),
        SQL("insert or ignore into assayItem values(120, 27, 'T',   0, 's',      null,        1,  1, 'PAI-T',   'Plasminogen Activator Inhibitor', 0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(121, 27, 'OD',  3, 'OD',     null,        -1, 2, 'PAI-OD',  'Absorbency',                      0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(122, 27, 'P',   1, '%',      null,        2,  3, 'PAI-%',   'PAI',                             0, 0, 0, 0, 0, 0, 0, 0, 1)"),
        SQL("insert or ignore into assayItem values(123, 27, 'R',   2, 'OD/min', 'OD/(T*60)', -1, 4, 'PAI-R',   'Absorbency rate',                 0, 0, 0, 0, 0, 0, 0, 0, 1)"),
        SQL("insert or ignore into assayItem values(130, 28, 'T',   0, 's',      null,        1,  1, 'TAFI-T',  'TAFI',                            0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(131, 28, 'OD',  3, 'OD',     null,        -1, 2, 'TAFI-OD', 'Absorbency',                      0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(132, 28, 'P',   1, 'ug/ml',  null,        2,  3, 'TAFI',    'TAFI',                            0, 0, 0, 0, 0, 0, 0, 0, 1)"),
        SQL("insert or ignore into assayItem values(140, 29, 'T',   0, 's',      null,        1,  1, 'FPS-T',   'Free Protein S',                  0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(141, 29, 'OD',  3, 'OD',     null,        -1, 2, 'FPS-OD',  'Absorbency',                      0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(142, 29, 'P',   1, '%',      null,        2,  3, 'FPS-%',   'FPS',                             0, 0, 0, 0, 0, 0, 0, 0, 1)"),
        SQL("insert or ignore into assayItem values(150, 30, 'T',   0, 's',      null,        1,  1, 'AP-T',    'Antiplasmin',                     0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(151, 30, 'OD',  3, 'OD',     null,        -1, 2, 'AP-OD',   'Absorbency',                      0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(152, 30, 'P',   1, '%',      null,        2,  3, 'AP-%',    'AP',                              0, 0, 0, 0, 0, 0, 0, 0, 1)"),
        SQL("insert or ignore into assayItem values(160, 31, 'T',   0, 's',      null,        1,  1, 'UFH-T',   'Unfractioned Heparin',            0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(161, 31, 'OD',  3, 'OD',     null,        -1, 2, 'UFH-OD',  'Absorbency',                      0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(162, 31, 'P',   1, 'IU/ml',  null,        2,  3, 'UFH',     'UFH',                             0, 0, 0, 0, 0, 0, 0, 0, 1)"),
        SQL("insert or ignore into assayItem values(163, 31, 'R',   2, 'OD/min', 'OD/(T*60)', -1, 4, 'UFH-R',   'Absorbency rate',                 0, 0, 0, 0, 0, 0, 0, 0, 1)"),
        SQL("insert or ignore into assayItem values(170, 32, 'T',   0, 's',      null,        1,  1, 'Hep-T',   'Heparinoid',                      0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(171, 32, 'OD',  3, 'OD',     null,        -1, 2, 'Hep-OD',  'Absorbency',                      0, 0, 0, 0, 0, 0, 0, 0, 0)"),
        SQL("insert or ignore into assayItem values(172, 32, 'P',   1, 'IU/ml',  null,        2,  3, 'Hep',     'Hep',                             0, 0, 0, 0, 0, 0, 0, 0, 1)"),

        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'FM',           2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'vWF',          2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'LMWH',         2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'Plg',          2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'PAI',          2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'TAFI',         2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'FPS',          2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'AP',           2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'UFH',          2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(0, 'Hep',          2000, 200, 3)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(FM)',   6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(vWF)',  6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(LMWH)', 6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(Plg)',  6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(PAI)',  6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(TAFI)', 6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(FPS)',  6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(AP)',   6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(UFH)',  6500, 200, 6)"),
        SQL("insert or ignore into reagent (type, name, initVolume, alarmLimit, vialType) values(2, 'Buffer(Hep)',  6500, 200, 6)"),
    });
    return true;
}

} // namespace coagulation
