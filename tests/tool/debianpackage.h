// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>

/// Makes the Debian package of what is built in a folder, without a look at the libraries that it needs.
/// A failure ends the test program.
/// \param build the folder of the build
/// \param configuration that is built there, for example "Debug"
/// \return the package's fields by their names, for example "Conflicts"
QMap<QString, QString> debianPackageOf(const QString &build, const QString &configuration);

/// Makes the same package and unpacks it. A failure ends the test program.
/// \param folder where the package's files go, for example to <folder>/usr/bin
void unpackDebianPackageOf(const QString &build, const QString &configuration,
                           const QString &folder);
