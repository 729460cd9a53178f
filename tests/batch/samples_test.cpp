// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/toolrun.h"

#include <QDir>
#include <QImage>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>

namespace
{
const QString kSamples = QStringLiteral(KESTRANE_SOURCE_DIR "/samples/");

/// What a script of the samples does to a picture. `holds` is an expression of the language
/// that is not 0 at its end; the fourth number makes readch look at the picture as it was.
struct SampleCase {
    const char *script, *picture, *holds;
    double fewest, most; ///< share of the pixels that change, in percent
};

const SampleCase kCases[] = {
    {"board-ruler", "coffee.png", "readch(3,7,0)==65535*(readch(0,0,0)==0)", 5, 20},
    {"checkerboard", "rocket.jpg", "readch(0,0,0)-readch(m_width/8,0,1)==65535", 90, 100},
    {"colour-bars", "retina.jpg", "readch(m_width-1,5,0)+readch(0,5,2)==49151", 90, 100},
    {"contact-number", "chelsea.png", "readch(1,m_height-2,1)<100", 1, 20},
    {"contrast-report", "rocket.jpg", "brightest-average*(average-darkest)*contrast>100", 5, 40},
    {"copyright-line", "coffee.png", "year>2025", 5, 12},
    {"crop-marks", "coffee.png", "readch(2,2,1)==65535", 1, 90},
    {"electronics", "retina.jpg", "abs(cutoff-1591.549)+abs(rled-193.3333)<0.01", 10, 70},
    {"emboss", "chelsea.png", "readch(40,40,0)==readch(40,40,2)", 80, 100},
    {"functions", "coffee.png", "a*b*c*d==20250", 20, 45},
    {"gradient", "rocket.jpg", "readch(0,0,2)>readch(m_width-1,m_height-1,2,0)", 95, 100},
    {"graduated-filter", "rocket.jpg",
     "readch(9,1,2)*2<readch(9,1,2,1)*(readch(9,m_height-2,2)==readch(9,m_height-2,2,1))", 20, 55},
    {"gray-balance", "coffee.png", "abs(redgain-1)+abs(bluegain-1)>0.01", 50, 100},
    {"gray-card-check", "chelsea.png", "redoff*(0-blueoff)>1", 10, 60},
    {"grid", "retina.jpg", "readch(0,40,0)<readch(0,40,0,1)*0+65535", 5, 40},
    {"histogram", "coffee.png", "value(h,bins-1)<=1", 15, 40},
    {"matrix-solve", "chelsea.png", "abs(x-2)+abs(y-3)+abs(z+1)+abs(off)<0.000001", 3, 40},
    {"mosaic", "hubble_deep_field.jpg",
     "readch(m_width/2,m_height/2,1)==readch(m_width/2+1,m_height/2+1,1)*"
     "(readch(0,0,1)==readch(0,0,1,1))+0",
     10, 60},
    {"negative-oval", "chelsea.png",
     "readch(80,50,1)+readch(80,50,1,1)==65535*(readch(0,0,1)==readch(0,0,1,1))", 25, 60},
    {"sepia", "coffee.png", "readch(60,60,0)>readch(60,60,2,0)", 80, 100},
    {"sharpen", "chelsea.png", "size(kernel)==9", 50, 100},
    {"smooth-selection", "retina.jpg", "readm(0,0)==0*(readm(m_width/2,m_height/2)>65000)", 10, 70},
    {"soft-border", "chelsea.png", "readm(0,0)==65535*(readm(m_width/2,m_height/2)<500)", 15, 90},
    {"soft-focus", "hubble_deep_field.jpg", "readm(3,3)==32767", 50, 100},
    {"starfield", "rocket.jpg", "i==300", 50, 100},
    {"step-wedge", "coffee.png", "readch(0,0,0)+65535==readch(m_width-1,0,0)", 95, 100},
    {"thirds", "chelsea.png", "readch(53,9,0)+readch(53,9,0,1)==65535", 1, 8},
    {"timestamp", "coffee.png", "month*day>0*(year>2025)", 0.5, 15},
    {"unit-table", "retina.jpg", "f==140*(dbm==47.78)", 10, 70},
    {"vignette", "coffee.png", "readch(0,0,0)<readch(0,0,0,1)*(readch(80,50,0)==readch(80,50,0,1))",
     30, 95},
    {"watermark", "chelsea.png", "readch(0,0,1)==readch(0,0,1,1)", 0.5, 20},
};

double changedPercent(const QImage &before, const QImage &after)
{
    EXPECT_EQ(before.size(), after.size());
    int changed = 0;
    for (int y = 0; y < before.height(); ++y)
        for (int x = 0; x < before.width(); ++x)
            changed += before.pixel(x, y) != after.pixel(x, y);
    return 100.0 * changed / (before.width() * before.height());
}

QString complaints(const std::string &messages)
{
    QStringList lines = QString::fromStdString(messages).split('\n', Qt::SkipEmptyParts);
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [](const QString &line) { return line.startsWith("notice: "); }),
                lines.end());
    return lines.join('\n');
}

TEST(SampleScripts, EachDoesWhatItSays)
{
    QTemporaryDir folder;
    const QString result = folder.filePath("result.png");
    QSet<QString> untried;
    for (const QString &name : QDir(kSamples + "scripts").entryList({"*.script"}))
        untried.insert(name);
    for (const SampleCase &c : kCases) {
        SCOPED_TRACE(c.script);
        const QString picture = folder.filePath(QString(c.picture).section('.', 0, 0) + ".png");
        const QImage small = QImage(kSamples + c.picture).scaledToWidth(160);
        ASSERT_TRUE(small.save(picture));
        untried.remove(c.script + QStringLiteral(".script"));
        // A check that does not hold is a division by zero, which --strict makes a failure.
        const ToolRun run = runInProcess({"-s", kSamples + "scripts/" + c.script + ".script", "-e",
                                          QStringLiteral("checked=1/(%1)").arg(c.holds), "--strict",
                                          "--origin", picture, "-o", result, picture});
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(complaints(run.messages), "");
        const double changed = changedPercent(QImage(picture), QImage(result));
        EXPECT_TRUE(changed >= c.fewest && changed <= c.most) << changed << " % changed";
        QFile::remove(result);
    }
    EXPECT_TRUE(untried.isEmpty()) << qPrintable(untried.values().join(' '));
}
} // namespace
