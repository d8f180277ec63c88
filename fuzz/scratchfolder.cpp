// SPDX-License-Identifier: MIT
#include "scratchfolder.h"

#include "require.h"

#include <QDir>
#include <QFileInfo>

namespace {

/// \return where temporary files go, if the user says so or there is no memory to write to
QString parentFolder()
{
    const QFileInfo memory("/dev/shm");
    if (qEnvironmentVariableIsEmpty("TMPDIR") && memory.isDir() && memory.isWritable())
        return memory.filePath();
    return QDir::tempPath();
}

} // namespace

ScratchFolder::ScratchFolder()
    : folder(parentFolder() + "/vardo-fuzz-XXXXXX")
{
    require(folder.isValid(), "a folder can be made: " + folder.errorString());
}
