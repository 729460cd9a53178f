// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/commandline.h"

#include <QFile>
#include <QLoggingCategory>
#include <QTextCodec>

#include <clocale>

#include <langinfo.h>

QStringList commandLineArguments(int argc, char **argv)
{
    std::setlocale(LC_CTYPE, "");
    if (QByteArray(nl_langinfo(CODESET)) == "ANSI_X3.4-1968")
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.warning=false"));
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments += QFile::decodeName(argv[i]);
    return arguments;
}
