// SPDX-License-Identifier: MIT
#include "coagulation/report/outcome.h"

#include "coagulation/report/comparison.h"
#include "coagulation/report/interruption.h"
#include "coagulation/report/progress.h"

namespace coagulation::report {

void compareDatabase(DatabaseFacts &facts, const QString &before, const QString &after,
                     bool examplesOfPatients, Progress &progress)
{
    const ComparisonOptions options{.allChangedRows = facts.name == "profile" || facts.name == "qc",
                                    .examples = facts.name != "data" || examplesOfPatients};
    compare(facts, before, after, options, [&](const QString &table) {
        progress.step("Comparing", facts.name + ", " + table);
        return !interrupted();
    });
}

} // namespace coagulation::report
