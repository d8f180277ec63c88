// SPDX-License-Identifier: MIT
/// Factory rows of version 17: further programs of PT and the mixing studies of APTT.

#include "coagulation/vardo/updateprofile.h"

// One row a line, so that columns of values can be compared.
// clang-format off

namespace coagulation {

bool UpdateProfile::update_v17()
{
    tryAll({
        SQL("insert or ignore into assayTemplate values(39, 'PT2',   'PT2',   null, 11, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assayTemplate values(40, 'PT3',   'PT3',   null, 12, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assayTemplate values(33, 'APTT2', 'APTT2', null, 21, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assayTemplate values(34, 'APTT3', 'APTT3', null, 22, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assayTemplate values(35, 'APTT4', 'APTT4', null, 23, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assayTemplate values(36, 'APTT5', 'APTT5', null, 24, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assayTemplate values(37, 'APTT6', 'APTT6', null, 25, 'T', 'P', 'Log', 'Log')"),
        SQL("insert or ignore into assayTemplate values(38, 'APTT7', 'APTT7', null, 26, 'T', 'P', 'Log', 'Log')"),

        SQL("insert or ignore into assayItem values(240, 39, 'T',   0, 's',  null,                        1,  1, 'PT2-S',    'Prothrombin time(PT2)',                              9,    15,   0, 0, 7,  40, 0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(241, 39, 'OD',  3, 'OD', null,                        -1, 2, 'PT2-OD',   'Absorbency(PT2)',                                    0,    0,    0, 0, 0,  0,  0, 0, -5, 10,  0)"),
        SQL("insert or ignore into assayItem values(242, 39, 'P',   1, '%',  null,                        2,  3, 'PT2-%',    'Activated degree(PT2)',                              80,   150,  0, 0, 0,  0,  0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(243, 39, 'R',   2, null, 'T/PT.normal',               2,  4, 'PT2-R',    'PTR(PT2)',                                           0.82, 1.15, 0, 0, 0,  0,  0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(244, 39, 'INR', 2, null, 'pow(R, ISI)',               2,  5, 'PT2-INR',  'International standardization ratio(PT2)',           0.76, 1.15, 0, 0, 0,  0,  0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(250, 40, 'T',   0, 's',  null,                        1,  1, 'PT3-S',    'Prothrombin time(PT3)',                              9,    15,   0, 0, 7,  40, 0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(251, 40, 'OD',  3, 'OD', null,                        -1, 2, 'PT3-OD',   'Absorbency(PT3)',                                    0,    0,    0, 0, 0,  0,  0, 0, -5, 10,  0)"),
        SQL("insert or ignore into assayItem values(252, 40, 'P',   1, '%',  null,                        2,  3, 'PT3-%',    'Activated degree(PT3)',                              80,   150,  0, 0, 0,  0,  0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(253, 40, 'R',   2, null, 'T/PT.normal',               2,  4, 'PT3-R',    'PTR(PT3)',                                           0.82, 1.15, 0, 0, 0,  0,  0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(254, 40, 'INR', 2, null, 'pow(R, ISI)',               2,  5, 'PT3-INR',  'International standardization ratio(PT3)',           0.76, 1.15, 0, 0, 0,  0,  0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(180, 33, 'T',   0, 's',  null,                        1,  1, 'APTT2-T',  'Normal mixed plasma',                                24,   36,   0, 0, 18, 60, 0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(181, 33, 'R',   2, null, 'T/APTT.normal',             2,  2, 'APTT2-R',  'APTT2R',                                             0.80, 1.20, 0, 0, 0,  0,  0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(190, 34, 'T',   0, 's',  null,                        1,  1, 'APTT3-T',  'Immediate testing of 1:1 mixed plasma',              24,   36,   0, 0, 18, 60, 0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(191, 34, 'R',   2, null, 'T/APTT.normal',             2,  2, 'APTT3-R',  'APTT3R',                                             0.80, 1.20, 0, 0, 0,  0,  0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(192, 34, 'RI',  2, '%',  '(APTT3.T-APTT2.T)/APTT.T',  2,  3, 'APTT3-RI', 'Ransons score',                                      0,    0,    0, 0, 0,  0,  0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(200, 35, 'T',   0, 's',  null,                        1,  1, 'APTT4-T',  'Patient incubated',                                  24,   36,   0, 0, 18, 60, 0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(201, 35, 'R',   2, null, 'T/APTT.normal',             2,  2, 'APTT4-R',  'APTT4R',                                             0.80, 1.20, 0, 0, 0,  0,  0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(210, 36, 'T',   0, 's',  null,                        1,  1, 'APTT5-T',  'Incubation of normal mixed plasma',                  24,   36,   0, 0, 18, 60, 0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(211, 36, 'R',   2, null, 'T/APTT.normal',             2,  2, 'APTT5-R',  'APTT5R',                                             0.80, 1.20, 0, 0, 0,  0,  0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(220, 37, 'T',   0, 's',  null,                        1,  1, 'APTT6-T',  'Incubation of 1:1 mixed plasma',                     24,   36,   0, 0, 18, 60, 0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(221, 37, 'R',   2, null, 'T/APTT.normal',             2,  2, 'APTT6-R',  'APTT6R',                                             0.80, 1.20, 0, 0, 0,  0,  0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(230, 38, 'T',   0, 's',  null,                        1,  1, 'APTT7-T',  'incubation of separately mixed plasma in 1:1 ratio', 24,   36,   0, 0, 18, 60, 0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(231, 38, 'R',   2, null, 'T/APTT.normal',             2,  2, 'APTT7-R',  'APTT7R',                                             0.80, 1.20, 0, 0, 0,  0,  0, 0, 0,  1e9, 1)"),
        SQL("insert or ignore into assayItem values(232, 38, 'RI',  2, '%',  '(APTT6.T-APTT5.T)/APTT4.T', 2,  3, 'APTT7-RI', 'Ransons score',                                      0,    0,    0, 0, 0,  0,  0, 0, 0,  1e9, 1)"),
    });

    if (!isChinese(UpdateBase::tr("zh")))
        return true;
    tryAll({
        SQL("update assayItem set code='凝血酶原时间(PT2)' where abbr='PT2-S'"),
        SQL("update assayItem set code='吸光度(PT2)' where abbr='PT2-OD'"),
        SQL("update assayItem set code='百分活动度(PT2)' where abbr='PT2-%'"),
        SQL("update assayItem set code='比值(PT2)' where abbr='PT2-R'"),
        SQL("update assayItem set code='国际标准化比值(PT2)' where abbr='PT2-INR'"),
        SQL("update assayItem set code='凝血酶原时间(PT3)' where abbr='PT3-S'"),
        SQL("update assayItem set code='吸光度(PT3)' where abbr='PT3-OD'"),
        SQL("update assayItem set code='百分活动度(PT3)' where abbr='PT3-%'"),
        SQL("update assayItem set code='比值(PT3)' where abbr='PT3-R'"),
        SQL("update assayItem set code='国际标准化比值(PT3)' where abbr='PT3-INR'"),
        SQL("update assayItem set code='正常混合血浆' where abbr='APTT2-T'"),
        SQL("update assayItem set code='正常混合血浆比值(APTT2)' where abbr='APTT2-R'"),
        SQL("update assayItem set code='1:1混合血浆即刻检测' where abbr='APTT3-T'"),
        SQL("update assayItem set code='1:1混合血浆即刻检测比值(APTT3)' where abbr='APTT3-R'"),
        SQL("update assayItem set code='罗纳斯指数(APTT3)' where abbr='APTT3-RI'"),
        SQL("update assayItem set code='患者孵育' where abbr='APTT4-T'"),
        SQL("update assayItem set code='患者孵育比值(APTT4)' where abbr='APTT4-R'"),
        SQL("update assayItem set code='正常混合血浆孵育' where abbr='APTT5-T'"),
        SQL("update assayItem set code='正常混合血浆孵育比值(APTT5)' where abbr='APTT5-R'"),
        SQL("update assayItem set code='1:1混合血浆孵育' where abbr='APTT6-T'"),
        SQL("update assayItem set code='1:1混合血浆孵育比值(APTT6)' where abbr='APTT6-R'"),
        SQL("update assayItem set code='分别孵育后1:1混合血浆' where abbr='APTT7-T'"),
        SQL("update assayItem set code='分别孵育后1:1混合血浆比值(APTT7)' where abbr='APTT7-R'"),
        SQL("update assayItem set code='罗纳斯指数(APTT7)' where abbr='APTT7-RI'"),
    });
    return true;
}

} // namespace coagulation
