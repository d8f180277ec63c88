// SPDX-License-Identifier: MIT
/// An edited sample and its upgrade through the comparison of vardo-report, and its page. The script names the
/// database in a line such as "-- database data"; without one it is the profile database.

#include "checkcomparison.h"
#include "editmutator.h"
#include "editscript.h"
#include "inputbytes.h"
#include "upgrading.h"

#include "expectedsteps.h"

#include <cstring>

namespace {

QString databaseOf(const QByteArray &script)
{
    for (const char *name : {"data", "qc", "syslog"}) {
        if (script.contains(QByteArray("-- database ") + name + '\n'))
            return name;
    }
    return "profile";
}

} // namespace

// NOLINTBEGIN(readability-identifier-naming)
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    prepareProcess(); // before the first sample is made
    const QByteArray text = inputBytes(data, size);
    const QString name = databaseOf(text);
    const QString folder = workFolder();
    const QString before = folder + "/before.db";
    const QString after = folder + '/' + name + ".db";
    const DatabaseFiles files =
        editedSample(name, EditScript::read(text, newestVersionOf(name)), folder);
    files.settleAt(before);
    files.settleAt(after);

    (void)upgradedIn(folder, name); // else both are the same
    checkComparison(name, before, after);
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(quint8 *data, std::size_t size, std::size_t most,
                                               unsigned int seed)
{
    prepareProcess();
    const QByteArray text = inputBytes(data, size);
    const QByteArray mutated = mutatedScript(databaseOf(text), text, qsizetype(most), seed);
    std::memcpy(data, mutated.constData(), std::size_t(mutated.size()));
    return std::size_t(mutated.size());
}
// NOLINTEND(readability-identifier-naming)
