// SPDX-License-Identifier: MIT
/// The stand-in's search for a translation: beside the executable, then in the shared folder.

#include "platform.h"
#include "toolrun.h"

#include "coagulation/core/translators.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
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
    QString translated() const;

    std::unique_ptr<QTemporaryDir> root;
    QString program; ///< the translated one
    const QString locale = usableLocale();
    const QString language = locale.section('_', 0, 0);
};

void TestTranslators::init()
{
    root = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(root->path()).mkpath("bin/translations"));
    QVERIFY(QDir(root->path()).mkpath("share/vardo/translations"));
    const QString path = QCoreApplication::applicationFilePath();
    program = root->filePath("bin/" + QFileInfo(path).fileName());
    QVERIFY(QFile::copy(path, program));
}

void TestTranslators::provide(const QString &source, const QString &target) const
{
    QVERIFY(QFile::copy(QString(TRANSLATIONS) + '/' + source, root->filePath(target)));
}

QString TestTranslators::translated() const
{
    QProcess process;
    process.setProcessEnvironment(environmentWithLocale(locale + ".UTF-8"));
    process.start(program, {"translate"});
    return process.waitForFinished() ? QString::fromUtf8(process.readAllStandardOutput())
                                     : process.errorString();
}

void TestTranslators::keepsTheSourceTextWithoutATranslation()
{
    QCOMPARE(translated(), QString("zh"));
}

void TestTranslators::findsATranslation_data()
{
    QTest::addColumn<QString>("file");

    const QString beside = "bin/translations/vardo_";
    const QString shared = "share/vardo/translations/vardo_";
    QTest::newRow("beside, language") << beside + language + ".qm";
    QTest::newRow("beside, country") << beside + locale + ".qm";
    QTest::newRow("shared, language") << shared + language + ".qm";
    QTest::newRow("shared, country") << shared + locale + ".qm";
}

/// Shows: PLT-4
void TestTranslators::findsATranslation()
{
    QFETCH(QString, file);

    provide("first.qm", file);

    QCOMPARE(translated(), QString("first"));
}

void TestTranslators::prefersTheFolderBesideTheExecutable()
{
    provide("first.qm", "bin/translations/vardo_" + language + ".qm");
    provide("second.qm", "share/vardo/translations/vardo_" + locale + ".qm");

    QCOMPARE(translated(), QString("first"));
}

/// Shows: PLT-4
void TestTranslators::passesOverADamagedTranslation()
{
    QFile damaged(root->filePath("bin/translations/vardo_" + language + ".qm"));
    QVERIFY(damaged.open(QIODevice::WriteOnly));
    damaged.write("no translation");
    damaged.close();
    provide("second.qm", "share/vardo/translations/vardo_" + language + ".qm");

    QCOMPARE(translated(), QString("second"));
}

void TestTranslators::takesTheLocalesOwnTranslationOnly()
{
    provide("first.qm", "bin/translations/vardo_eo.qm");

    QCOMPARE(translated(), QString("zh"));
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
