#pragma once

#include <QString>
#include <QStringList>

// Which of the installed Tesseract languages to read with, from the user's
// own list of languages. Stateless.
namespace RecognitionLanguages {

// The language tag of a Tesseract model: "eng" is "en", "deu" is "de",
// "chi_sim" is "zh-Hans". A model this table doesn't know keeps its name.
QString tagOf(const QString &model);

// The models for `preferred` (language tags in the user's order, as
// QLocale::uiLanguages() gives them: "de-CH", "en-US", "fr"), each the first
// installed model whose tag is the tag itself, starts with its language and
// "-", or is its language; no model twice. English comes last when it is
// installed and no preferred language chose it. Never empty while anything
// is installed.
QStringList choose(const QStringList &preferred, const QStringList &installed);

} // namespace RecognitionLanguages
