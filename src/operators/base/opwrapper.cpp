// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/base/opwrapper.h"

OpWrapper::OpWrapper(OperatorTable *table) : ops(table) {}

OpWrapper::~OpWrapper() = default;

void OpWrapper::reset() {}

void OpWrapper::apply(image *, image *) {}

void OpWrapper::settings(bool) {}

void OpWrapper::scriptLine(QString *out)
{
    if (out)
        *out = QStringLiteral("# No script operator for \"%1\"\n").arg(menuName);
}

int OpWrapper::dubspin(int, double)
{
    return 0;
}

int OpWrapper::intspin(int, int)
{
    return 0;
}

int OpWrapper::button(int)
{
    return 0;
}

int OpWrapper::checkbox(int, bool)
{
    return 0;
}

int OpWrapper::combo(int, int)
{
    return 0;
}

int OpWrapper::lineedit(int, QString)
{
    return 0;
}

int OpWrapper::slider(int, int)
{
    return 0;
}

int OpWrapper::codeedit(QObject *)
{
    return 0;
}

int OpWrapper::editor(int, QObject *)
{
    return 0;
}

int OpWrapper::colorwell(int, int)
{
    return 0;
}

int OpWrapper::scriptCall(int, QStringList *, image *, QString *)
{
    return -1;
}

bool OpWrapper::readArguments(int, const QStringList &, QString *usage)
{
    if (usage)
        usage->clear();
    return false;
}

void OpWrapper::build(OpPage *) {}

void OpWrapper::curveEdited() {}

bool OpWrapper::setParameter(const QString &, const QString &)
{
    return false;
}

QString OpWrapper::parameterText(const QString &) const
{
    return QString();
}

QString OpWrapper::helpRows() const
{
    return QString();
}

QString OpWrapper::usage() const
{
    return QString(usageLine).replace(QLatin1String("%1"), scriptName);
}
