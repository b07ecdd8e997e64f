#pragma once

// Log lines go to standard error as "time level category: message", one
// category per class ("glimpso.AppSettings"). Info and above by default;
// GLIMPSO_LOG=debug, or Qt's own QT_LOGGING_RULES, turns on more.
namespace Logging {
// A command-line client answers in plain sentences; its info chatter would
// only get in the way of scripts reading its standard error.
enum class Audience { application, commandLine };
void setUp(Audience audience = Audience::application);
}
