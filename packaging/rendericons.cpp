// SPDX-License-Identifier: GPL-3.0-or-later
// Draws the program's icon in the sizes that desktops look for, when the program is built.
//   rendericons ICON.svg FOLDER SIDE...      makes FOLDER/SIDE.png for each side
#include <QCoreApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    QSvgRenderer icon(arguments.value(1));
    if (!icon.isValid()) {
        std::fprintf(stderr, "rendericons: cannot read %s\n", qPrintable(arguments.value(1)));
        return 1;
    }
    for (const QString &side : arguments.mid(3)) {
        QImage picture(side.toInt(), side.toInt(), QImage::Format_ARGB32_Premultiplied);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        icon.render(&painter);
        painter.end();
        if (!picture.save(arguments.value(2) + QLatin1Char('/') + side + QLatin1String(".png")))
            return 1;
    }
    return 0;
}
