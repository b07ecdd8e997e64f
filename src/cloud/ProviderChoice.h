#pragma once

#include "cloud/S3CompatibleProvider.h"

#include <QString>

#include <optional>

class AppSettings;

// Which bucket the settings point at: the provider chosen ("none", "r2",
// "s3Compatible") and its fields, turned into the provider's configuration.
// Absent while the settings are incomplete. Main thread: it reads the
// settings, and loads the credentials on first need.
namespace ProviderChoice {

// Cloudflare R2's account endpoints are https://{account}.r2.cloudflarestorage.com.
inline constexpr char r2HostSuffix[] = ".r2.cloudflarestorage.com";
inline constexpr char defaultS3Region[] = "us-east-1";
inline constexpr char r2Region[] = "auto";

std::optional<glimpso::cloud::S3CompatibleProvider::Config> config(AppSettings &settings);

// Blanks and tabs cut from both ends; line feeds and the rest stay.
QString trimBlanks(const QString &text);
// A public base counts only if it parses and has a scheme and a host; else
// links fall back to the object's own URL.
QUrl publicBase(const QString &text);

} // namespace ProviderChoice
