#include "QrPictures.h"

#include "recognize/CodeReader.h"

#include <gtest/gtest.h>

#include <QPainter>
#include <QRandomGenerator>
#include <QTransform>

namespace {

const QString kLink = QStringLiteral("https://example.org/docs/install?step=3&lang=en#top");
const QString kText = QStringLiteral("Wi-Fi: Zuhause 5G / Passwort: grüne Äpfel 42");

#define NEED_QRENCODE(image)                                                                                         \
    if ((image).isNull())                                                                                              \
    GTEST_SKIP() << "qrencode is not installed"

// The code laid on a busy picture: noise, stripes and words all round.
QImage onBusyGround(const QImage &code)
{
    QImage ground(code.width() + 240, code.height() + 160, QImage::Format_RGB32);
    QRandomGenerator dice(7);
    for (int y = 0; y < ground.height(); ++y)
        for (int x = 0; x < ground.width(); ++x) {
            const int v = 90 + int(dice.bounded(120)) + ((x / 9) % 2) * 30;
            ground.setPixel(x, y, qRgb(v, v / 2 + 60, 255 - v));
        }
    QPainter painter(&ground);
    painter.setPen(Qt::black);
    painter.drawText(10, 20, QStringLiteral("Scan me to open the page"));
    painter.drawImage(120, 80, code);
    return ground;
}

} // namespace

TEST(CodeReader, ReadsQrCodesAtEveryModuleSizeFromTwoToEightPixels)
{
    for (int module = 2; module <= 8; ++module) {
        const QImage code = qrencode(kLink, module);
        NEED_QRENCODE(code);
        const std::optional<CodeReader::Code> found = CodeReader::first(code);
        ASSERT_TRUE(found) << "module " << module;
        EXPECT_EQ(found->text, kLink) << "module " << module;
    }
}

TEST(CodeReader, ReadsLightOnDarkCodes)
{
    for (const int module : {2, 4}) {
        QImage code = qrencode(kText, module);
        NEED_QRENCODE(code);
        code.invertPixels();
        const std::optional<CodeReader::Code> found = CodeReader::first(code);
        ASSERT_TRUE(found) << "module " << module;
        EXPECT_EQ(found->text, kText);
    }
}

TEST(CodeReader, ReadsACodeTurnedAQuarter)
{
    const QImage code = qrencode(kText, 3);
    NEED_QRENCODE(code);
    const std::optional<CodeReader::Code> found = CodeReader::first(code.transformed(QTransform().rotate(90)));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->text, kText);
}

TEST(CodeReader, ReadsACodeOnABusyGroundAndSaysWhereItIs)
{
    const QImage code = qrencode(kLink, 3);
    NEED_QRENCODE(code);
    const std::optional<CodeReader::Code> found = CodeReader::first(onBusyGround(code));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->text, kLink);
    EXPECT_TRUE(QRectF(120, 80, code.width(), code.height()).contains(found->box.center()));
}

TEST(CodeReader, OfTwoCodesTheUpperOneComesFirst)
{
    const QImage first = qrencode(QStringLiteral("first"), 3);
    NEED_QRENCODE(first);
    const QImage second = qrencode(QStringLiteral("second"), 3);
    QImage both(first.width() + second.width() + 40, second.height() + 120, QImage::Format_RGB32);
    both.fill(Qt::white);
    QPainter painter(&both);
    painter.drawImage(0, 100, first);
    painter.drawImage(first.width() + 40, 0, second);
    painter.end();
    EXPECT_EQ(CodeReader::first(both)->text, "second");
}

TEST(CodeReader, APictureWithoutACodeHasNone)
{
    QImage blank(200, 100, QImage::Format_RGB32);
    blank.fill(Qt::white);
    EXPECT_FALSE(CodeReader::first(blank));
    EXPECT_FALSE(CodeReader::first(QImage()));
    EXPECT_FALSE(CodeReader::first(QImage(3, 3, QImage::Format_RGB32)));
}
