// SPDX-License-Identifier: MIT
#include "coagulation/vardo/consolelog.h"

#include <QFile>
#include <QLoggingCategory>

#include <array>
#include <cstdio>
#include <cstdlib>

namespace coagulation {

namespace {

// NOLINTNEXTLINE(*-avoid-non-const-global-variables): a message handler is a plain function
std::FILE *logFile = nullptr;

std::FILE *openForAppending(const QString &fileName)
{
#ifdef Q_OS_WIN
    return _wfopen(qUtf16Printable(fileName), L"a"); // fopen knows only the code page's letters
#else
    return std::fopen(QFile::encodeName(fileName).constData(), "a");
#endif
}

/// \return what a line of this type begins with; null for a type that is not logged
const char *label(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return "Debug";
    case QtInfoMsg:
        return "Info";
    case QtWarningMsg:
        return "Warning";
    case QtCriticalMsg:
        return "Critical";
    case QtFatalMsg:
        return "Fatal";
    }
    return nullptr;
}

const char *orNull(const char *text)
{
    return text != nullptr ? text : "(null)";
}

void writeToLog(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const char *name = label(type);
    if (name == nullptr)
        return;

    std::fprintf(logFile, "%s: %s (%s:%u, %s)\n", name, message.toLocal8Bit().constData(),
                 orNull(context.file), static_cast<unsigned>(context.line),
                 orNull(context.function));
    if (type == QtFatalMsg) {
        std::fflush(logFile); // abort does not
        std::abort();
    }
}

void ignoreLoggingRules(QLoggingCategory *category)
{
    const bool own = qstrcmp(category->categoryName(), "default") == 0;
    category->setEnabled(QtDebugMsg, own);
    if (own) {
        for (const QtMsgType type : {QtInfoMsg, QtWarningMsg, QtCriticalMsg})
            category->setEnabled(type, true);
    }
}

} // namespace

void shieldLogFromEnvironment()
{
    for (const char *variable :
         {"QT_FATAL_WARNINGS", "QT_FATAL_CRITICALS", "QT_LOGGING_RULES", "QT_LOGGING_CONF",
          "QT_LOGGING_DEBUG", "QT_MESSAGE_PATTERN", "QT_DEBUG_PLUGINS"})
        qunsetenv(variable);
    QLoggingCategory::installFilter(ignoreLoggingRules); // the machine's qtlogging.ini
}

void openLog(const QString &fileName)
{
    logFile = openForAppending(fileName);
    if (logFile == nullptr)
        return;
    // large enough for what is logged between two flushes: lines that are written at once are not torn
    // by those of another run
    static std::array<char, 0x10000> buffer;
    std::setvbuf(logFile, buffer.data(), _IOFBF, buffer.size());
    qInstallMessageHandler(writeToLog);
}

void flushLog()
{
    if (logFile != nullptr)
        std::fflush(logFile);
}

void closeLog()
{
    if (logFile == nullptr)
        return;
    qInstallMessageHandler(nullptr);
    std::fclose(logFile);
    logFile = nullptr;
}

} // namespace coagulation
