#include "history/JsonFields.h"

#include <QJsonValue>

#include <cmath>

namespace JsonFields {

namespace {
bool absent(const QJsonValue &value)
{
    return value.isUndefined() || value.isNull();
}
} // namespace

bool requiredString(const QJsonObject &object, const QString &key, QString &out)
{
    const QJsonValue value = object.value(key);
    if (!value.isString())
        return false;
    out = value.toString();
    return true;
}

bool requiredNumber(const QJsonObject &object, const QString &key, double &out)
{
    const QJsonValue value = object.value(key);
    if (!value.isDouble() || !std::isfinite(value.toDouble()))
        return false;
    out = value.toDouble();
    return true;
}

bool optionalString(const QJsonObject &object, const QString &key, std::optional<QString> &out)
{
    const QJsonValue value = object.value(key);
    if (absent(value))
        return true;
    if (!value.isString())
        return false;
    out = value.toString();
    return true;
}

bool optionalNumber(const QJsonObject &object, const QString &key, double &out)
{
    const QJsonValue value = object.value(key);
    if (absent(value))
        return true;
    // A number too large for a double reads as infinite, which no file of
    // ours holds and which would not survive being written back.
    if (!value.isDouble() || !std::isfinite(value.toDouble()))
        return false;
    out = value.toDouble();
    return true;
}

bool optionalInteger(const QJsonObject &object, const QString &key, qint64 &out)
{
    const QJsonValue value = object.value(key);
    if (absent(value))
        return true;
    if (!value.isDouble())
        return false;
    const double number = value.toDouble();
    // 2^63 itself does not fit, so the upper bound is exclusive.
    constexpr double limit = 9223372036854775808.0;
    if (!std::isfinite(number) || std::trunc(number) != number || number < -limit || number >= limit)
        return false;
    out = static_cast<qint64>(number);
    return true;
}

} // namespace JsonFields
