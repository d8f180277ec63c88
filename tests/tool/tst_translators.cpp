// SPDX-License-Identifier: MIT
/// The stand-in's search for a translation: beside the executable, then in the shared folder.

#include "toolrun.h"

#include "coagulation/core/translators.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

/// Started with "translate", this program is the translated one: it installs the translators and
/// prints what "zh" has become in the context of the engine.
static int translate()
{
    coagulation::installTranslators();
    const QString text = QCoreApplication::translate("coagulation::UpdateBase", "zh");
    std::fputs(qUtf8Printable(text), stdout);
    return 0;
}

class TestTranslators : public QObject {
    Q_OBJECT

private slots:
    void init();

    void keepsTheSourceTextWithoutATranslation();
    void findsATranslation_data();
    void findsATranslation();
    void prefersTheFolderBesideTheExecutable();
    void passesOverADamagedTranslation();
    void takesTheLocalesOwnTranslationOnly();

private:
    void provide(const QString &source, const QString &target) const;
    /// \return what the translated program prints under the locale
    QString translated(const QString &locale) const;

    std::unique_ptr<QTemporaryDir> root;
};

void TestTranslators::init()
{
    root = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(root->path()).mkpath("bin/translations"));
    QVERIFY(QDir(root->path()).mkpath("share/vardo/translations"));
    QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), root->filePath("bin/program")));
}

void TestTranslators::provide(const QString &source, const QString &target) const
{
    QVERIFY(QFile::copy(QString(TRANSLATIONS) + '/' + source, root->filePath(target)));
}

QString TestTranslators::translated(const QString &locale) const
{
    QProcess program;
    program.setProcessEnvironment(environmentWithLocale(locale));
    program.start(root->filePath("bin/program"), {"translate"});
    return program.waitForFinished() ? QString::fromUtf8(program.readAllStandardOutput())
                                     : program.errorString();
}

void TestTranslators::keepsTheSourceTextWithoutATranslation()
{
    QCOMPARE(translated("fr_FR.UTF-8"), QString("zh"));
}

void TestTranslators::findsATranslation_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("locale");

    const QString beside = "bin/translations/";
    const QString shared = "share/vardo/translations/";
    QTest::newRow("beside, language") << beside + "vardo_fr.qm"
                                      << "fr_FR.UTF-8";
    QTest::newRow("beside, country") << beside + "vardo_fr_FR.qm"
                                     << "fr_FR.UTF-8";
    QTest::newRow("shared, language") << shared + "vardo_fr.qm"
                                      << "fr_FR.UTF-8";
    QTest::newRow("shared, country") << shared + "vardo_fr_CA.qm"
                                     << "fr_CA.UTF-8";
}

void TestTranslators::findsATranslation()
{
    QFETCH(QString, file);
    QFETCH(QString, locale);

    provide("first.qm", file);

    QCOMPARE(translated(locale), QString("first"));
}

void TestTranslators::prefersTheFolderBesideTheExecutable()
{
    provide("first.qm", "bin/translations/vardo_fr.qm");
    provide("second.qm", "share/vardo/translations/vardo_fr_FR.qm");

    QCOMPARE(translated("fr_FR.UTF-8"), QString("first"));
}

void TestTranslators::passesOverADamagedTranslation()
{
    QFile damaged(root->filePath("bin/translations/vardo_fr.qm"));
    QVERIFY(damaged.open(QIODevice::WriteOnly));
    damaged.write("no translation");
    damaged.close();
    provide("second.qm", "share/vardo/translations/vardo_fr.qm");

    QCOMPARE(translated("fr_FR.UTF-8"), QString("second"));
}

void TestTranslators::takesTheLocalesOwnTranslationOnly()
{
    provide("first.qm", "bin/translations/vardo_de.qm");

    QCOMPARE(translated("fr_FR.UTF-8"), QString("zh"));
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (QCoreApplication::arguments().value(1) == "translate")
        return translate();

    TestTranslators test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_translators.moc"
