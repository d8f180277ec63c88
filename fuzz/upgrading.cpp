// SPDX-License-Identifier: MIT
#include "upgrading.h"

#include "require.h"
#include "scratchfolder.h"

#include "upgrade.h"

#include <QCoreApplication>
#include <QSqlDatabase>

#include <array>
#include <string>

namespace {

void ignoreMessage(QtMsgType type, const QMessageLogContext & /*context*/, const QString &message)
{
    require(type != QtFatalMsg, message);
}

void makeApplication()
{
    static std::string program = "fuzz";
    static std::array<char *, 2> arguments{program.data(), nullptr};
    static int count = 1;
    // Never destroyed: at the end of a program Qt's own static objects may be gone before it.
    static const auto *application = new QCoreApplication(count, arguments.data());
    Q_UNUSED(application)
}

} // namespace

void prepareProcess()
{
    makeApplication();
    qInstallMessageHandler(ignoreMessage);
}

QString workFolder()
{
    static const ScratchFolder folder;
    return folder.path();
}

bool upgradedIn(const QString &folder, const QString &name)
{
    const bool upgraded = upgradeIn(folder, name);
    // as the end of the tool would close it
    QSqlDatabase::removeDatabase(QSqlDatabase::defaultConnection);
    return upgraded;
}
