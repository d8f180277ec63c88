// SPDX-License-Identifier: MIT
#include "folderfiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

FolderFiles filesIn(const QString &folder)
{
    FolderFiles files;
    QDirIterator paths(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (paths.hasNext()) {
        QFile file(paths.next());
        if (!file.open(QIODevice::ReadOnly))
            qFatal("%s: %s", qUtf8Printable(file.fileName()), qUtf8Printable(file.errorString()));
        files.insert(QDir(folder).relativeFilePath(file.fileName()), file.readAll());
    }
    return files;
}

void setFilesIn(const QString &folder, const FolderFiles &files)
{
    const FolderFiles present = filesIn(folder);
    for (auto file = present.begin(); file != present.end(); ++file) {
        if (!QFile::remove(QDir(folder).filePath(file.key())))
            qFatal("%s cannot be removed", qUtf8Printable(file.key()));
    }
    for (auto file = files.begin(); file != files.end(); ++file) {
        QFile copy(QDir(folder).filePath(file.key()));
        QDir().mkpath(QFileInfo(copy.fileName()).path());
        if (!copy.open(QIODevice::WriteOnly) || copy.write(file.value()) != file.value().size())
            qFatal("%s: %s", qUtf8Printable(copy.fileName()), qUtf8Printable(copy.errorString()));
    }
}
