// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTextBrowser>

/// Shows rich text that scripts have a part in: it fetches nothing, neither files nor pictures.
class ScriptLogView : public QTextBrowser
{
    Q_OBJECT
public:
    using QTextBrowser::QTextBrowser;
    QVariant loadResource(int, const QUrl &) override { return QVariant(); }
};
