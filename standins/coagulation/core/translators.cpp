// SPDX-License-Identifier: MIT
#include "coagulation/core/translators.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTranslator>

#include <memory>

namespace coagulation {

void installTranslators()
{
    const QString beside = QCoreApplication::applicationDirPath();
    for (const char *folder : {"/translations", "/../share/vardo/translations"}) {
        auto translator = std::make_unique<QTranslator>();
        if (translator->load(QLocale::system(), "vardo", "_", beside + folder)) {
            translator->setParent(QCoreApplication::instance());
            QCoreApplication::installTranslator(translator.release());
            return;
        }
    }
}

} // namespace coagulation
