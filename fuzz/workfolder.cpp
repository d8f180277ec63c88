// SPDX-License-Identifier: MIT
#include "workfolder.h"

#include "require.h"
#include "scratchfolder.h"

#include "upgrade.h"

#include <QCoreApplication>
#include <QSqlDatabase>

#include <array>
#include <string>

namespace {

class Environment {
public:
    Environment() { qInstallMessageHandler(ignore); }

    QString folder() const { return scratch.path(); }

private:
    static void ignore(QtMsgType type, const QMessageLogContext &, const QString &message)
    {
        require(type != QtFatalMsg, message);
    }

    int argumentCount = 1;
    std::string program = "fuzz";
    std::array<char *, 2> arguments{program.data(), nullptr};
    // Never destroyed: at the end of a program Qt's own static objects may be gone before it.
    QCoreApplication *application = new QCoreApplication(argumentCount, arguments.data());
    ScratchFolder scratch;
};

} // namespace

QString workFolder()
{
    static const Environment environment;
    return environment.folder();
}

bool upgradedIn(const QString &folder, const QString &name)
{
    const bool upgraded = upgradeIn(folder, name);
    // as the end of the tool would close it
    QSqlDatabase::removeDatabase(QSqlDatabase::defaultConnection);
    return upgraded;
}
