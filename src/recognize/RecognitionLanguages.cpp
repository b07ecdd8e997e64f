#include "recognize/RecognitionLanguages.h"

#include <QHash>

namespace RecognitionLanguages {

namespace {

const QHash<QString, QString> &tags()
{
    static const QHash<QString, QString> table = {
        {"afr", "af"}, {"amh", "am"}, {"ara", "ar"}, {"aze", "az"}, {"bel", "be"}, {"ben", "bn"},
        {"bos", "bs"}, {"bul", "bg"}, {"cat", "ca"}, {"ces", "cs"}, {"chi_sim", "zh-Hans"},
        {"chi_tra", "zh-Hant"}, {"cym", "cy"}, {"dan", "da"}, {"deu", "de"}, {"ell", "el"},
        {"eng", "en"}, {"epo", "eo"}, {"est", "et"}, {"eus", "eu"}, {"fas", "fa"}, {"fin", "fi"},
        {"fra", "fr"}, {"gle", "ga"}, {"glg", "gl"}, {"guj", "gu"}, {"heb", "he"}, {"hin", "hi"},
        {"hrv", "hr"}, {"hun", "hu"}, {"hye", "hy"}, {"ind", "id"}, {"isl", "is"}, {"ita", "it"},
        {"jpn", "ja"}, {"kat", "ka"}, {"kaz", "kk"}, {"khm", "km"}, {"kor", "ko"}, {"lav", "lv"},
        {"lit", "lt"}, {"mal", "ml"}, {"mar", "mr"}, {"mkd", "mk"}, {"mlt", "mt"}, {"msa", "ms"},
        {"nep", "ne"}, {"nld", "nl"}, {"nor", "no"}, {"pan", "pa"}, {"pol", "pl"}, {"por", "pt"},
        {"ron", "ro"}, {"rus", "ru"}, {"sin", "si"}, {"slk", "sk"}, {"slv", "sl"}, {"spa", "es"},
        {"sqi", "sq"}, {"srp", "sr"}, {"srp_latn", "sr-Latn"}, {"swa", "sw"}, {"swe", "sv"},
        {"tam", "ta"}, {"tel", "te"}, {"tha", "th"}, {"tur", "tr"}, {"ukr", "uk"}, {"urd", "ur"},
        {"uzb", "uz"}, {"vie", "vi"},
    };
    return table;
}

// Bokmål and Nynorsk read with the Norwegian model.
QString languageOf(const QString &tag)
{
    QString language = tag.section(QLatin1Char('-'), 0, 0).section(QLatin1Char('_'), 0, 0).toLower();
    if (language == u"nb" || language == u"nn")
        language = QStringLiteral("no");
    return language;
}

} // namespace

QString tagOf(const QString &model)
{
    return tags().value(model, model);
}

QStringList choose(const QStringList &preferred, const QStringList &installed)
{
    QStringList chosen;
    for (QString wanted : preferred) {
        wanted.replace(QLatin1Char('_'), QLatin1Char('-'));
        const QString language = languageOf(wanted);
        for (const QString &model : installed) {
            const QString tag = tagOf(model);
            if (tag.compare(wanted, Qt::CaseInsensitive) == 0 || tag.startsWith(language + u'-', Qt::CaseInsensitive)
                || tag.compare(language, Qt::CaseInsensitive) == 0) {
                if (!chosen.contains(model))
                    chosen << model;
                break;
            }
        }
    }
    if (installed.contains(QStringLiteral("eng")) && !chosen.contains(QStringLiteral("eng")))
        chosen << QStringLiteral("eng");
    if (chosen.isEmpty() && !installed.isEmpty())
        chosen << installed.first();
    return chosen;
}

} // namespace RecognitionLanguages
