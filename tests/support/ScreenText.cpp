#include "ScreenText.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <vector>

namespace ScreenText {

namespace {

// Sentences of dialogs, notices and settings pages.
const std::array kProse = {
    "Your changes have been saved.",
    "Are you sure you want to delete these 3 files?",
    "This action cannot be undone.",
    "Check for updates automatically every week",
    "Last modified on 12 March 2024 at 14:32",
    "Show hidden files and folders in the sidebar",
    "The connection to the server was lost. Trying again in 30 seconds.",
    "Sign in with your work account to continue",
    "Download complete: 248 MB in 1 minute 12 seconds",
    "Battery at 17% - plug in your computer soon",
    "Enter the six-digit code we sent to your phone.",
    "Your subscription renews on August 1, 2025.",
    "Remember my choice for files of this type",
    "A new version (4.2.1) is ready to install.",
    "Could not open the file because it is in use by another program.",
    "Shared with Maria, Tom and 4 others",
    "Meeting moved to Thursday at 10:30 in room B-204",
    "Please restart the application to apply the new settings.",
    "Use a strong password with at least 12 characters.",
    "Invoice INV-20931 was paid on 2024-05-17.",
    "Searching 14,302 messages in All Mail",
    "Free space: 41.7 GB of 512 GB",
    "The quick brown fox jumps over the lazy dog.",
    "Sync paused while on a metered connection",
};

// Short labels: menu items, buttons, headings, addresses.
const std::array kLabels = {
    "Settings",
    "File   Edit   View   Window   Help",
    "Open Recent",
    "Export as PDF...",
    "Keyboard Shortcuts",
    "Order #48213 shipped",
    "Total: $1,249.99",
    "john.doe@example.org",
    "https://docs.example.com/guide/install#linux",
    "/home/anna/Documents/report-2024-q1.pdf",
    "Error 404: Not Found",
    "Version 5.3.0 (build 2187)",
    "Reply All",
    "Mark as Unread",
    "Downloads",
    "Wi-Fi: HomeNetwork 5G",
    "CPU 23%  Memory 61%",
    "Tuesday, 4 June",
    "Add to Favorites",
    "Privacy and Security",
    "Zoom In    Ctrl+Plus",
    "192.168.1.42:8080",
    "Project Alpha / Sprint 14",
    "Unsaved Document 3",
};

// Lines of source code.
const std::array kCode = {
    "for (int i = 0; i < count; ++i) {",
    "    total += values[i] * weight;",
    "}",
    "return std::make_unique<Engine>(path);",
    "def parse_args(argv: list[str]) -> Namespace:",
    "    parser.add_argument(\"--verbose\", action=\"store_true\")",
    "const url = `https://api.example.com/v2/items?page=${page}`;",
    "if err != nil {",
    "    return fmt.Errorf(\"open %s: %w\", name, err)",
    "SELECT id, name FROM users WHERE age > 30 ORDER BY name;",
    "import { useState, useEffect } from 'react';",
    "let mut buffer = Vec::with_capacity(1024);",
    "public static void main(String[] args) throws IOException {",
    "#include <stdio.h>",
    "x = np.linspace(0, 10, 200)",
    "    self.assertEqual(result.status_code, 200)",
    "fn area(width: u32, height: u32) -> u32 { width * height }",
    "while (queue.size() > 0 && !stopped) {",
    "body { margin: 0; font-family: sans-serif; }",
    "git commit -m \"Fix the parser for empty lines\"",
};

// What a terminal shows: a prompt, then a command; or a command's output.
const std::array kTerminalCommands = {
    "git status",
    "ls -la",
    "make -j4",
    "ping -c 3 10.0.0.1",
    "cat /etc/hostname",
    "df -h /home",
    "ssh deploy@build-02.internal",
    "python3 manage.py migrate",
};
const std::array kTerminalOutput = {
    "On branch main",
    "Your branch is up to date with 'origin/main'.",
    "drwxr-xr-x  5 anna staff  4096 Jan 12 09:41 build",
    "-rw-r--r--  1 anna staff 18342 Jan 12 09:40 README.md",
    "-rwxr-xr-x  1 anna staff  2210 Jan 11 17:02 configure",
    "[ 42%] Building CXX object src/CMakeFiles/app.dir/main.cpp.o",
    "64 bytes from 10.0.0.1: icmp_seq=1 ttl=64 time=0.412 ms",
    "3 packets transmitted, 3 received, 0% packet loss",
    "Filesystem      Size  Used Avail Use% Mounted on",
    "/dev/nvme0n1p2  468G  201G  244G  46% /home",
    "Applying auth.0012_alter_user_first_name... OK",
    "Compiling serde v1.0.193",
    "warning: unused variable: `index`",
    "Connection to build-02.internal closed.",
    "modified:   src/parser.c",
    "Successfully installed requests-2.31.0",
};

struct Theme {
    const char *name;
    QRgb background;
    QRgb text;
    QRgb accent; // prompts and the like
};

const std::array kLightThemes = {
    Theme{"light", 0xffffffff, 0xff1f1f1f, 0xff1a5fb4},
    Theme{"light", 0xfff5f5f5, 0xff333333, 0xff26a269},
    Theme{"light-secondary", 0xffffffff, 0xff6e6e6e, 0xff3584e4},
    Theme{"light-tinted", 0xffeef3fb, 0xff1c3d6e, 0xffc01c28},
};
const std::array kDarkThemes = {
    Theme{"dark", 0xff1e1e1e, 0xffd4d4d4, 0xff569cd6},
    Theme{"dark", 0xff2b2b2b, 0xffe6e6e6, 0xff8ae234},
    Theme{"dark-secondary", 0xff242424, 0xff9a9a9a, 0xff62a0ea},
    Theme{"dark-blue", 0xff0d1b2a, 0xffc9d6e3, 0xfff6d32d},
};
const std::array kTerminalThemes = {
    Theme{"terminal", 0xff000000, 0xffcccccc, 0xff4e9a06},
    Theme{"terminal", 0xff300a24, 0xffffffff, 0xff8ae234},
    Theme{"terminal-green", 0xff0c0c0c, 0xff33ff66, 0xff33ff66},
    Theme{"terminal-light", 0xfffdf6e3, 0xff586e75, 0xff268bd2},
};

const std::array kProportional = {"DejaVu Sans", "Noto Sans", "Noto Serif", "DejaVu Serif"};
const std::array kMonospace = {"DejaVu Sans Mono", "Noto Mono"};

// A small generator of our own, so that a seed gives the same set with every
// standard library.
class Dice
{
public:
    explicit Dice(std::uint32_t seed) : m_state(seed * 2654435761u + 0x9e3779b9u) {}
    std::uint32_t next()
    {
        m_state ^= m_state << 13;
        m_state ^= m_state >> 17;
        m_state ^= m_state << 5;
        return m_state;
    }
    int below(int n) { return int(next() % std::uint32_t(n)); }
    template <typename List>
    auto pick(const List &list) { return list[std::size_t(below(int(list.size())))]; }

private:
    std::uint32_t m_state;
};

enum class Kind { dialog, menu, code, terminal, label };

struct Run {
    QString text;
    QRgb colour;
};
using Line = std::vector<Run>;

QString lineText(const Line &line)
{
    QString text;
    for (const Run &run : line)
        text += run.text;
    return text;
}

QImage render(const std::vector<Line> &lines, const QFont &font, const Theme &theme, Dice &dice, double spacing)
{
    const QFontMetrics metrics(font);
    int width = 0;
    for (const Line &line : lines)
        width = std::max(width, metrics.horizontalAdvance(lineText(line)));
    const int lineStep = int(metrics.lineSpacing() * spacing + 0.5);
    // Margins as a drag around text leaves them: a few pixels, not many.
    const int left = 2 + dice.below(11);
    const int right = 2 + dice.below(11);
    const int top = 1 + dice.below(9);
    const int bottom = 1 + dice.below(9);
    QImage image(left + width + right, top + lineStep * int(lines.size()) - (lineStep - metrics.height()) + bottom,
                 QImage::Format_RGB32);
    image.fill(theme.background);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setFont(font);
    int baseline = top + metrics.ascent();
    for (const Line &line : lines) {
        int x = left;
        for (const Run &run : line) {
            painter.setPen(QColor::fromRgb(run.colour));
            painter.drawText(x, baseline, run.text);
            x += metrics.horizontalAdvance(run.text);
        }
        baseline += lineStep;
    }
    return image;
}

template <typename List>
std::vector<Line> plainLines(const List &pool, int count, QRgb colour, Dice &dice)
{
    std::vector<Line> lines;
    int start = dice.below(int(pool.size()));
    for (int i = 0; i < count; ++i)
        lines.push_back({Run{QString::fromUtf8(pool[std::size_t((start + i) % int(pool.size()))]), colour}});
    return lines;
}

std::vector<Line> terminalLines(const Theme &theme, int count, Dice &dice)
{
    std::vector<Line> lines;
    const QString prompt = QStringLiteral("anna@work:~/src$ ");
    lines.push_back({Run{prompt, theme.accent}, Run{QString::fromUtf8(dice.pick(kTerminalCommands)), theme.text}});
    int start = dice.below(int(kTerminalOutput.size()));
    for (int i = 1; i < count; ++i)
        lines.push_back({Run{QString::fromUtf8(kTerminalOutput[std::size_t((start + i) % int(kTerminalOutput.size()))]),
                             theme.text}});
    return lines;
}

} // namespace

QList<Sample> makeSet(int count, std::uint32_t seed)
{
    Dice dice(seed);
    QList<Sample> set;
    for (int i = 0; i < count; ++i) {
        // Every kind, size and face comes round in turn; the rest is chance.
        const Kind kind = Kind(i % 5);
        const int pixelSize = 9 + (i * 5 + i / 8) % 8;
        const bool mono = kind == Kind::code || kind == Kind::terminal;
        const Theme theme = kind == Kind::terminal ? dice.pick(kTerminalThemes)
                            : (i / 5) % 2         ? dice.pick(kDarkThemes)
                                                  : dice.pick(kLightThemes);
        QFont font(QString::fromUtf8(mono ? kMonospace[std::size_t(i / 5 % 2)]
                                          : kProportional[std::size_t(i / 5 % int(kProportional.size()))]));
        font.setPixelSize(pixelSize);
        font.setHintingPreference(dice.below(2) ? QFont::PreferVerticalHinting : QFont::PreferFullHinting);
        if (kind != Kind::code && kind != Kind::terminal && dice.below(6) == 0)
            font.setBold(true);

        std::vector<Line> lines;
        double spacing = 1.0;
        switch (kind) {
        case Kind::dialog:
            lines = plainLines(kProse, 2 + dice.below(3), theme.text, dice);
            spacing = 1.0 + dice.below(3) * 0.15;
            break;
        case Kind::menu:
            lines = plainLines(kLabels, 4 + dice.below(5), theme.text, dice);
            spacing = 1.3 + dice.below(4) * 0.2;
            break;
        case Kind::code:
            lines = plainLines(kCode, 3 + dice.below(4), theme.text, dice);
            break;
        case Kind::terminal:
            lines = terminalLines(theme, 3 + dice.below(4), dice);
            break;
        case Kind::label:
            lines = plainLines(kLabels, 1, dice.below(3) ? theme.text : theme.accent, dice);
            break;
        }
        QStringList texts;
        for (const Line &line : lines)
            texts << lineText(line);
        static const char *kindNames[] = {"dialog", "menu", "code", "terminal", "label"};
        Sample sample;
        sample.name = QStringLiteral("%1-%2-%3-%4-%5px")
                          .arg(i, 3, 10, QLatin1Char('0'))
                          .arg(QLatin1String(theme.name), QLatin1String(kindNames[int(kind)]), font.family())
                          .arg(pixelSize);
        sample.image = render(lines, font, theme, dice, spacing);
        sample.text = texts.join(QLatin1Char('\n'));
        set << sample;
    }
    return set;
}

QString normalized(const QString &text)
{
    static const QRegularExpression space(QStringLiteral("\\s+"));
    QStringList lines;
    for (const QString &line : text.split(QLatin1Char('\n'))) {
        const QString plain = line.trimmed().replace(space, QStringLiteral(" "));
        if (!plain.isEmpty())
            lines << plain;
    }
    return lines.join(QLatin1Char('\n'));
}

int editDistance(const QString &from, const QString &to)
{
    std::vector<int> previous(std::size_t(to.size()) + 1), current(std::size_t(to.size()) + 1);
    for (qsizetype j = 0; j <= to.size(); ++j)
        previous[std::size_t(j)] = int(j);
    for (qsizetype i = 1; i <= from.size(); ++i) {
        current[0] = int(i);
        for (qsizetype j = 1; j <= to.size(); ++j) {
            const int substitution = previous[std::size_t(j - 1)] + (from[i - 1] == to[j - 1] ? 0 : 1);
            current[std::size_t(j)] =
                std::min({previous[std::size_t(j)] + 1, current[std::size_t(j - 1)] + 1, substitution});
        }
        std::swap(previous, current);
    }
    return previous[std::size_t(to.size())];
}

void Score::add(const QString &expected, const QString &recognised)
{
    const QString want = normalized(expected);
    edits += editDistance(normalized(recognised), want);
    characters += want.size();
}

} // namespace ScreenText
