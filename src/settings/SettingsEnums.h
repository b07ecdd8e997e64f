#pragma once

#include <QString>

#include <array>
#include <optional>
#include <utility>

// Enumerations kept in the settings file. Persisted: each case is stored as its
// raw text, which equals the case name; the order of cases is the order shown
// in pickers. Renaming a case changes the file format.

enum class SaveFormat { png, jpeg, heic };
enum class EditMode { onScreen, afterCapture };
enum class RecordingAction { copy, save, trim };
enum class HistoryEdge { right, left, top };
enum class HistoryRetention { day, week, month, forever };
enum class CloudProvider { none, r2, s3Compatible };

template <typename E>
struct EnumCases;

#define GLIMPSO_ENUM_CASE(E, c) std::pair{E::c, #c}

template <>
struct EnumCases<SaveFormat> {
    static constexpr std::array cases = {GLIMPSO_ENUM_CASE(SaveFormat, png), GLIMPSO_ENUM_CASE(SaveFormat, jpeg),
                                         GLIMPSO_ENUM_CASE(SaveFormat, heic)};
};
template <>
struct EnumCases<EditMode> {
    static constexpr std::array cases = {GLIMPSO_ENUM_CASE(EditMode, onScreen),
                                         GLIMPSO_ENUM_CASE(EditMode, afterCapture)};
};
template <>
struct EnumCases<RecordingAction> {
    static constexpr std::array cases = {GLIMPSO_ENUM_CASE(RecordingAction, copy),
                                         GLIMPSO_ENUM_CASE(RecordingAction, save),
                                         GLIMPSO_ENUM_CASE(RecordingAction, trim)};
};
template <>
struct EnumCases<HistoryEdge> {
    static constexpr std::array cases = {GLIMPSO_ENUM_CASE(HistoryEdge, right), GLIMPSO_ENUM_CASE(HistoryEdge, left),
                                         GLIMPSO_ENUM_CASE(HistoryEdge, top)};
};
template <>
struct EnumCases<HistoryRetention> {
    static constexpr std::array cases = {
        GLIMPSO_ENUM_CASE(HistoryRetention, day), GLIMPSO_ENUM_CASE(HistoryRetention, week),
        GLIMPSO_ENUM_CASE(HistoryRetention, month), GLIMPSO_ENUM_CASE(HistoryRetention, forever)};
};
template <>
struct EnumCases<CloudProvider> {
    static constexpr std::array cases = {GLIMPSO_ENUM_CASE(CloudProvider, none),
                                         GLIMPSO_ENUM_CASE(CloudProvider, r2),
                                         GLIMPSO_ENUM_CASE(CloudProvider, s3Compatible)};
};

#undef GLIMPSO_ENUM_CASE

template <typename E>
concept PersistedEnum = requires { EnumCases<E>::cases; };

template <PersistedEnum E>
QString enumText(E value)
{
    for (const auto &[c, text] : EnumCases<E>::cases) {
        if (c == value)
            return QString::fromLatin1(text);
    }
    return {};
}

template <PersistedEnum E>
std::optional<E> enumFromText(const QString &text)
{
    for (const auto &[c, raw] : EnumCases<E>::cases) {
        if (text == QLatin1String(raw))
            return c;
    }
    return std::nullopt;
}
