// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

/// What a folder and those below it hold: the bytes of the files by their paths, seen from the folder.
using FolderFiles = QMap<QString, QByteArray>;

FolderFiles filesIn(const QString &folder);

/// Makes the files the only ones in a folder and below it. Folders stay.
void setFilesIn(const QString &folder, const FolderFiles &files);
