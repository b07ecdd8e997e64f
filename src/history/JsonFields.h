#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

// Reading one key of a JSON object the strict way the history files are
// decoded: a key that is there must have the right type, or the whole object
// fails. Each reader returns false for a failure and leaves `out` unchanged
// when the key is absent (or null), so a caller's default stands.
namespace JsonFields {

bool requiredString(const QJsonObject &object, const QString &key, QString &out);
bool requiredNumber(const QJsonObject &object, const QString &key, double &out);
bool optionalString(const QJsonObject &object, const QString &key, std::optional<QString> &out);
bool optionalNumber(const QJsonObject &object, const QString &key, double &out);
// A whole number that fits in 64 bits; 3.0 counts, 3.5 does not.
bool optionalInteger(const QJsonObject &object, const QString &key, qint64 &out);

} // namespace JsonFields
