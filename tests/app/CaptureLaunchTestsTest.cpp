#include "app/CaptureLaunchTests.h"

#include "EventLoopWait.h"

#include "recognize/TextRecognizer.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFont>
#include <QPainter>
#include <QTemporaryDir>

TEST(CaptureLaunchTests, AWindowRequestReadsItsFourFields)
{
    auto request = CaptureLaunchTests::parseWindow("4194316:#FFD700:12.5:0");
    EXPECT_EQ(request.windowID, 4194316u);
    EXPECT_EQ(request.options.background, QColor("#FFD700"));
    EXPECT_EQ(request.options.padding, 12.5);
    EXPECT_FALSE(request.options.shadow);

    request = CaptureLaunchTests::parseWindow(":transparent");
    EXPECT_FALSE(request.windowID);
    EXPECT_FALSE(request.options.background);
    EXPECT_EQ(request.options.padding, 48.0);
    EXPECT_TRUE(request.options.shadow);

    request = CaptureLaunchTests::parseWindow("x:no colour:wide");
    EXPECT_FALSE(request.windowID);
    EXPECT_EQ(request.options.background, QColor(Qt::white));
    EXPECT_EQ(request.options.padding, 48.0);
}

TEST(CaptureLaunchTests, AReadingWritesItsReportBesideThePicture)
{
    QTemporaryDir dir;
    QImage image(360, 40, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(14);
    painter.setFont(font);
    painter.setPen(Qt::black);
    painter.drawText(8, 26, QStringLiteral("Mark as Unread"));
    painter.end();
    const QString path = dir.filePath("words.png");
    ASSERT_TRUE(image.save(path));
    TextRecognizer recognizer({QStringLiteral("en-US")});
    CaptureLaunchTests::readText(path, recognizer);
    ASSERT_TRUE(processEventsUntil([&] { return QFile::exists(path + ".ocr.txt"); }, 30000));
    QFile report(path + ".ocr.txt");
    ASSERT_TRUE(report.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(report.readAll());
    EXPECT_TRUE(text.startsWith("seconds: ")) << text.toStdString();
    EXPECT_TRUE(text.contains("\ntext: Mark as Unread\ncode: \n")) << text.toStdString();
}
