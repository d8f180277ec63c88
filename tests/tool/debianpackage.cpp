// SPDX-License-Identifier: MIT
#include "debianpackage.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QStringList>
#include <QTemporaryDir>

namespace {

/// \return what a program writes; one that fails ends the test program
QString outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    const bool ended = process.waitForFinished(-1);
    const QByteArray output = process.readAll();
    if (!ended || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        qFatal("%s: %s", qUtf8Printable(program), output.constData());
    return QString::fromUtf8(output);
}

/// \return the path of the package, which is made in the folder
QString makePackage(const QString &build, const QString &configuration, const QDir &folder)
{
    outputOf(CPACK,
             {"-G", "DEB", "--config", build + "/CPackConfig.cmake", "-C", configuration, "-B",
              folder.path(), "-D", "CPACK_DEBIAN_PACKAGE_SHLIBDEPS=OFF"});
    const QStringList packages = folder.entryList({"*.deb"});
    if (packages.size() != 1)
        qFatal("not one package: %s", qUtf8Printable(packages.join(' ')));
    return folder.filePath(packages.constFirst());
}

} // namespace

QMap<QString, QString> debianPackageOf(const QString &build, const QString &configuration)
{
    static const QRegularExpression field(R"(^([\w-]+): (.*(\n .*)*)$)",
                                          QRegularExpression::MultilineOption);
    const QTemporaryDir folder;
    const QString package = makePackage(build, configuration, folder.path());

    QMap<QString, QString> fields;
    const QString all = outputOf("dpkg-deb", {"--field", package});
    for (const QRegularExpressionMatch &match : field.globalMatch(all))
        fields[match.captured(1)] = match.captured(2);
    return fields;
}

void unpackDebianPackageOf(const QString &build, const QString &configuration,
                           const QString &folder)
{
    const QTemporaryDir packed;
    outputOf("dpkg-deb", {"--extract", makePackage(build, configuration, packed.path()), folder});
}
