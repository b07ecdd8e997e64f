#pragma once

#include "settings/CredentialFile.h"

#include <QByteArray>
#include <QString>

#include <cstdio>
#include <functional>
#include <optional>

class InstanceChannel;

// `glimpso cloud-credentials`: the access key and the secret come in as two
// lines on standard input (typed at a prompt that does not echo the secret,
// when the input is a terminal) and go to the credential file, never through
// a command line or the bus. A running copy is then told to read the file
// again. Runs in the calling process; needs no display.
namespace CloudCredentialsCommand {

struct Outcome {
    int exitCode = 0;
    QString output;
    QString error;
};

// The first two lines, each without its line ending; absent when there are
// fewer than two.
std::optional<CredentialFile::Credentials> parse(const QByteArray &input);

// Stores what `input` holds in `file`: both empty remove the file. `channel`,
// when given, reaches a running copy.
Outcome run(const QByteArray &input, const CredentialFile &file, InstanceChannel *channel);

// Reads standard input (prompting on a terminal) and runs; the exit code.
int runProgram(int argc, char **argv);

} // namespace CloudCredentialsCommand
