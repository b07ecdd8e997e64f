#include "app/CloudCredentialsCommand.h"

#include "app/InstanceChannelLoader.h"
#include "appbase/ConsoleText.h"
#include "appbase/InstanceChannel.h"
#include "appbase/Logging.h"

#include <QCoreApplication>

#include <termios.h>
#include <unistd.h>

namespace CloudCredentialsCommand {

namespace {

constexpr int reloadAnswerMs = 2000;

QString lineWithoutEnding(QByteArray line)
{
    if (line.endsWith('\n'))
        line.chop(1);
    if (line.endsWith('\r'))
        line.chop(1);
    return QString::fromUtf8(line);
}

// One line from standard input, echoed or not.
QByteArray readLine(bool echo)
{
    termios saved{};
    const bool terminal = isatty(STDIN_FILENO) && tcgetattr(STDIN_FILENO, &saved) == 0;
    if (terminal && !echo) {
        termios quiet = saved;
        quiet.c_lflag &= ~tcflag_t(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    QByteArray line;
    int c = 0;
    while ((c = std::fgetc(stdin)) != EOF) {
        line.append(char(c));
        if (c == '\n')
            break;
    }
    if (terminal && !echo) {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
        std::fputc('\n', stderr);
    }
    return line;
}

QByteArray readInput()
{
    if (!isatty(STDIN_FILENO)) {
        QByteArray input = readLine(true);
        input += readLine(true);
        return input;
    }
    std::fputs("Access key ID: ", stderr);
    std::fflush(stderr);
    QByteArray input = readLine(true);
    if (!input.endsWith('\n'))
        input += '\n';
    std::fputs("Secret access key: ", stderr);
    std::fflush(stderr);
    input += readLine(false);
    return input;
}

} // namespace

std::optional<CredentialFile::Credentials> parse(const QByteArray &input)
{
    const qsizetype firstEnd = input.indexOf('\n');
    if (firstEnd < 0)
        return std::nullopt;
    const QByteArray rest = input.mid(firstEnd + 1);
    if (rest.isEmpty())
        return std::nullopt;
    const qsizetype secondEnd = rest.indexOf('\n');
    return CredentialFile::Credentials{lineWithoutEnding(input.left(firstEnd + 1)),
                                       lineWithoutEnding(secondEnd < 0 ? rest : rest.left(secondEnd + 1))};
}

Outcome run(const QByteArray &input, const CredentialFile &file, InstanceChannel *channel)
{
    const std::optional<CredentialFile::Credentials> credentials = parse(input);
    if (!credentials)
        return {1, {},
                QStringLiteral("glimpso: expected two lines on standard input: the access key ID, then the secret "
                               "access key")};
    Outcome outcome;
    if (credentials->accessKeyID.isEmpty() && credentials->secretAccessKey.isEmpty()) {
        file.remove();
        outcome.output = QStringLiteral("Removed the cloud credentials from %1\n").arg(file.path());
    } else if (file.save(*credentials)) {
        outcome.output = QStringLiteral("Saved the cloud credentials in %1\n").arg(file.path());
    } else {
        return {1, {}, QStringLiteral("glimpso: the cloud credentials could not be saved in %1").arg(file.path())};
    }
    if (channel && !channel->otherCopies().isEmpty()) {
        const auto reply = channel->sendCommand({QStringLiteral("cloud-credentials"), QStringLiteral("--reload")},
                                                reloadAnswerMs);
        if (!reply || reply->status != 0)
            outcome.error = QStringLiteral("glimpso: the running copy did not take the new keys; quit and start "
                                           "it again");
    }
    return outcome;
}

int runProgram(int argc, char **argv)
{
    Logging::setUp(Logging::Audience::commandLine);
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("glimpso"));
    const QByteArray input = readInput();
    auto channel = InstanceChannelLoader::make();
    const Outcome outcome = run(input, CredentialFile(), channel.get());
    ConsoleText::print(stdout, outcome.output);
    ConsoleText::print(stderr, outcome.error);
    return outcome.exitCode;
}

} // namespace CloudCredentialsCommand
