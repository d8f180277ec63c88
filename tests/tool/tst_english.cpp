// SPDX-License-Identifier: MIT
/// The English labels: that none is missing, and what they change in a database that the tool upgrades.

#include "platform.h"
#include "testdatabase.h"
#include "testfiles.h"
#include "toolrun.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

/// A text of the profile database that the language decides.
struct Text {
    QString query;
    QString chinese;
    QString english;
};

Text label(const QString &name, const QString &chinese, const QString &english)
{
    return {QString("select value from profile where name = '%1'").arg(name), chinese, english};
}

Text code(const QString &abbr, const QString &chinese, const QString &english)
{
    return {QString("select code from assayItem where abbr = '%1'").arg(abbr), chinese, english};
}

const QList<Text> texts{
    label("dilution",
          "梯度1;1/5;1/10;1/20;1/30,梯度2;1/5;1/10;1/20;1/30;1/40,"
          "梯度3;1/1;1/2;1/4;1/8,梯度4;1/1;3/4;1/2;1/4",
          "Gradient 1;1/5;1/10;1/20;1/30,Gradient 2;1/5;1/10;1/20;1/30;1/40,"
          "Gradient 3;1/1;1/2;1/4;1/8,Gradient 4;1/1;3/4;1/2;1/4"),
    label("patient/sampleType", "样本类型", "Sample type"),
    label("reagent/initVolume", "初始量[ul]", "Initial volume [ul]"),
    label("reagent/alarmLimit", "报警限[ul]", "Alarm limit [ul]"),
    label("reagent/interruptLimit", "中断限[ul]", "Interrupt limit [ul]"),
    label("patient/hospitalNo", "住院号", "Hospital no."),
    label("patient/memo", "备注", "Remarks"),
    label("patient/printTime", "打印时间", "Time of printing"),
    label("patient/outputTime", "传输时间", "Time of transmission"),
    label("patient/time", "送检时间", "Time of submission"),
    label("patient/sampleTime", "采样时间", "Time of sampling"),
    label("patient/testTime", "测试时间", "Time of test"),
    label("patient/validateTime", "审核时间", "Time of validation"),
    label("patient/instrId", "测量仪器", "Instrument"),
    code("APTT", "活化部分凝血活酶时间", "Activated partial thromboplastin time"),
    // what only the Chinese language changes, asked for in two contexts
    code("PT-OD", "吸光度(PT)", "Absorbency"),
    code("XA-T", "时间(抗Xa)", "Anti-Xa time"),
    code("XA-%", "抗Xa-百分活动度", "Anti-Xa Activated degree"),
    code("APTT2-T", "正常混合血浆", "Normal mixed plasma"),
    code("APTT7-DETLA", "时间依赖差(APTT7)", "Time-dependency"),
    // the laboratory's own
    label("patient/name", "姓名", "姓名"),
    code("PT-S", "凝血酶原时间", "凝血酶原时间"),
};

} // namespace

class TestEnglish : public QObject {
    Q_OBJECT

private slots:
    void hasEveryLabel();
    void decidesTheTexts_data();
    void decidesTheTexts();
};

/// Shows: PRO-17
void TestEnglish::hasEveryLabel()
{
    if (QString(LUPDATE).isEmpty())
        QSKIP("lupdate is not to be had here: whether a label is missing is NOT tested");
    const QString current = QString(SOURCE) + "/translations/vardo_en.ts";
    const QTemporaryDir folder;
    const QString updated = folder.filePath("vardo_en.ts");
    QVERIFY(QFile::copy(current, updated));

    QProcess lupdate;
    lupdate.setWorkingDirectory(SOURCE);
    lupdate.start(LUPDATE,
                  {"-silent", "-no-obsolete", "-locations", "none", "-I", ".", "coagulation",
                   "-source-language", "zh_CN", "-ts", updated});

    QVERIFY2(lupdate.waitForFinished() && lupdate.exitCode() == 0,
             lupdate.readAllStandardError().constData());
    QCOMPARE(fileBytes(updated), fileBytes(current));
    QVERIFY(!fileBytes(current).contains("unfinished"));
}

void TestEnglish::decidesTheTexts_data()
{
    QTest::addColumn<QString>("folder"); // of the translation, from the tool's on
    QTest::addColumn<QString>("locale");
    QTest::addColumn<bool>("english");

    const QString shared = "../share/vardo/translations";
    QTest::newRow("no translation") << ""
                                    << "en_US.UTF-8" << false;
    QTest::newRow("beside the tool") << "translations"
                                     << "en_US.UTF-8" << true;
    QTest::newRow("shared") << shared << "en_US.UTF-8" << true;
    QTest::newRow("another English") << shared << "en_GB.UTF-8" << true;
    QTest::newRow("Chinese") << shared << "zh_CN.UTF-8" << false;
    QTest::newRow("another language") << shared << "fr_FR.UTF-8" << false;
    QTest::newRow("no language") << shared << "C.UTF-8" << false;
}

/// Shows: PRO-17
void TestEnglish::decidesTheTexts()
{
    QFETCH(QString, folder);
    QFETCH(QString, locale);
    QFETCH(bool, english);
    if (!canHaveLocale(locale))
        QSKIP("Windows gives every process the user's own language: this one is NOT tested");
    const QTemporaryDir root;
    QVERIFY(QDir(root.path()).mkpath("bin"));
    const QString tool = root.filePath("bin/" + QFileInfo(VARDO).fileName());
    QVERIFY(QFile::copy(VARDO, tool));
    if (!folder.isEmpty()) {
        const QDir translations(QDir(root.filePath("bin")).filePath(folder));
        QVERIFY(translations.mkpath("."));
        QVERIFY(QFile::copy(ENGLISH, translations.filePath("vardo_en.qm")));
    }
    const TestDatabase database("profile.db");
    database.load("profile_v0.sql");
    database.execute({"delete from profile where name = 'patient/hospitalNo'"}); // it would be kept

    const ToolRun run = runTool({.program = tool,
                                 .arguments = {"-p", database.folderPath() + '/'},
                                 .environment = environmentWithLocale(locale)});

    QCOMPARE(run.exitCode, 0);
    for (const Text &text : texts)
        QCOMPARE(database.rows(text.query),
                 QStringList{'\'' + (english ? text.english : text.chinese) + '\''});
}

QTEST_GUILESS_MAIN(TestEnglish)
#include "tst_english.moc"
