// SPDX-License-Identifier: MIT
#include "coagulation/vardo/consolelog.h"

#include <QFile>
#include <QLoggingCategory>

#include <array>
#include <cstdio>
#include <cstdlib>

#ifdef Q_OS_WIN
#include <QDir>

#include <bit>
#include <cstdint>
#include <fcntl.h>
#include <io.h>
#include <qt_windows.h>
#endif

namespace coagulation {

namespace {

// NOLINTNEXTLINE(*-avoid-non-const-global-variables): a message handler is a plain function
std::FILE *logFile = nullptr;
// NOLINTNEXTLINE(*-avoid-non-const-global-variables)
QtMessageHandler handlerWithoutLog = nullptr; // Qt's own

#ifdef Q_OS_WIN
constexpr const char *lineEnd = "\r\n";

std::FILE *openForAppending(const QString &fileName)
{
    // fopen knows only the code page's letters, and what it appends may overwrite another run's lines:
    // this access appends in one go. The C library translates no line ends, or it would tear lines.
    auto *const handle =
        CreateFileW(qUtf16Printable(QDir::toNativeSeparators(fileName)), FILE_APPEND_DATA,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return nullptr;
    const int descriptor =
        _open_osfhandle(std::bit_cast<std::intptr_t>(handle), _O_APPEND | _O_BINARY);
    return _fdopen(descriptor, "ab");
}

/// Qt would send messages to the debugger when there is no console, and in the code page's letters.
void writeToStandardError(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    printError(qFormatLogMessage(type, context, message) + '\n');
}
#else
constexpr const char *lineEnd = "\n";

std::FILE *openForAppending(const QString &fileName)
{
    return std::fopen(QFile::encodeName(fileName).constData(), "a");
}
#endif

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

    // Not by fprintf: there are C libraries that hand each line over at its end when that writes it.
    const QByteArray line = QByteArray(name) + ": " + message.toUtf8() + " (" + orNull(context.file)
        + ':' + QByteArray::number(context.line) + ", " + orNull(context.function) + ')' + lineEnd;
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), logFile);
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

void printError(const QString &text)
{
#ifdef Q_OS_WIN
    // A console would take bytes for letters of its own code page.
    auto *const console = GetStdHandle(STD_ERROR_HANDLE);
    if (DWORD mode = 0; GetConsoleMode(console, &mode) != 0) {
        WriteConsoleW(console, text.utf16(), static_cast<DWORD>(text.size()), nullptr, nullptr);
        return;
    }
#endif
    std::fputs(text.toUtf8().constData(), stderr);
    std::fflush(stderr);
}

void shieldLogFromEnvironment()
{
    for (const char *variable :
         {"QT_FATAL_WARNINGS", "QT_FATAL_CRITICALS", "QT_LOGGING_RULES", "QT_LOGGING_CONF",
          "QT_LOGGING_DEBUG", "QT_MESSAGE_PATTERN", "QT_DEBUG_PLUGINS"})
        qunsetenv(variable);
    QLoggingCategory::installFilter(ignoreLoggingRules); // the machine's qtlogging.ini
#ifdef Q_OS_WIN
    qInstallMessageHandler(writeToStandardError);
#else
    qputenv("QT_FORCE_STDERR_LOGGING", "1"); // not to the system's journal, if Qt can write to it
#endif
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
    handlerWithoutLog = qInstallMessageHandler(writeToLog);
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
    qInstallMessageHandler(handlerWithoutLog);
    std::fclose(logFile);
    logFile = nullptr;
}

} // namespace coagulation
