// SPDX-License-Identifier: MIT
#include "checkreport.h"

#include "require.h"

#include "coagulation/report/json.h"
#include "coagulation/report/page.h"

#include <QBuffer>
#include <QJsonDocument>
#include <QSet>
#include <QXmlStreamReader>

#include <algorithm>
#include <utility>

using namespace coagulation::report;

namespace {

void checkIsUtf8(const QByteArray &text)
{
    require(QString::fromUtf8(text).toUtf8() == text, "the text is UTF-8");
}

/// \return whether a letter is not seen, and changes how others are
bool isControlCharacter(QChar letter)
{
    const bool turnsOthersRound = (letter >= QChar(0x202a) && letter <= QChar(0x202e))
        || (letter >= QChar(0x2066) && letter <= QChar(0x2069));
    return turnsOthersRound || (letter != '\n' && letter.category() == QChar::Other_Control);
}

/// Nothing runs, and nothing comes from elsewhere.
void checkIsInert(const QStringView &element, const QXmlStreamAttributes &attributes)
{
    static const QStringList active{"script", "iframe", "object", "embed", "link",  "img",
                                    "form",   "input",  "base",   "audio", "video", "image"};
    require(!active.contains(element.toString()),
            "there is no such element: " + element.toString());
    for (const QXmlStreamAttribute &attribute : attributes) {
        const QString name = attribute.name().toString();
        require(!name.startsWith("on") && name != "src", "there is no such attribute: " + name);
        require(name != "href" || attribute.value().startsWith('#'), "links stay in the page");
    }
}

void checkPage(const Report &report)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    require(writePage(buffer, report), "the page is written");
    checkIsUtf8(buffer.data());
    const QString page = QString::fromUtf8(buffer.data());
    require(std::none_of(page.begin(), page.end(), isControlCharacter),
            "the page holds no control character");

    QSet<QString> ids;
    QSet<QString> targets;
    QXmlStreamReader reader(buffer.data());
    while (!reader.atEnd()) {
        reader.readNext();
        const QXmlStreamAttributes attributes = reader.attributes();
        if (!reader.isStartElement())
            continue;
        checkIsInert(reader.name(), attributes);
        if (const QString id = attributes.value("id").toString(); !id.isEmpty()) {
            require(!ids.contains(id), "an identifier is there once: " + id);
            ids << id;
        }
        if (attributes.hasAttribute("href"))
            targets << attributes.value("href").mid(1).toString();
    }
    require(!reader.hasError(), "the page is well-formed: " + reader.errorString());
    for (const QString &target : std::as_const(targets))
        require(ids.contains(target), "a link leads somewhere: " + target);
}

void checkJson(const Report &report)
{
    const QByteArray json = toJson(report);
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    require(error.error == QJsonParseError::NoError && document.isObject(),
            "the JSON can be parsed: " + error.errorString());
    checkIsUtf8(json);
}

} // namespace

void checkReport(const Report &report)
{
    checkPage(report);
    checkJson(report);
}
