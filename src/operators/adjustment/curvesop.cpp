// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/curvesop.h"

#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "operators/base/oppage.h"
#include "operators/pipeline/lookup.h"

#include <QSettings>

#include <cmath>

namespace
{
const QString kKnotsKey = QStringLiteral("CurveKnots");
const QString kHotkeyKey = QStringLiteral("CurvesHotkey");
constexpr double kTop = 255;         ///< of the number boxes
constexpr double kShownStep = 0.005; ///< less is not seen in them
enum Spin { kSpinIn, kSpinOut };
enum Button { kButtonLoad, kButtonSave };
} // namespace

Curvesop::Curvesop(OperatorTable *table) : OpWrapper(table) {}

void Curvesop::apply(image *target, image *)
{
    if (!workspace() || !workspace()->colorMapGreen)
        return;
    const ToneCurve now = curve; // a drag may change it meanwhile
    now.fillTable(workspace()->colorMapGreen);
    applyLumaLut(target);
}

void Curvesop::reset()
{
    setCurve(ToneCurve());
}

void Curvesop::settings(bool save)
{
    QSettings *store = ops ? ops->store : nullptr;
    if (!store)
        return;
    if (save) {
        store->setValue(ops->prefix + kKnotsKey, curve.text());
        store->setValue(ops->prefix + kHotkeyKey, hotkey);
        return;
    }
    ToneCurve read;
    read.setText(store->value(ops->prefix + kKnotsKey).toString());
    setCurve(read);
    hotkey = store->value(ops->prefix + kHotkeyKey, hotkey).toString();
}

bool Curvesop::setParameter(const QString &key, const QString &value)
{
    // A command line hands the text over as it was typed: a person may have quoted it.
    QString knots = value.trimmed();
    if (knots.size() >= 2 && knots.startsWith(QLatin1Char('"')) && knots.endsWith(QLatin1Char('"')))
        knots = knots.mid(1, knots.size() - 2);
    ToneCurve read;
    if (key != kKnotsKey || !read.setText(knots))
        return false;
    setCurve(read);
    return true;
}

QString Curvesop::parameterText(const QString &key) const
{
    return key == kKnotsKey ? curve.text() : QString();
}

QString Curvesop::helpRows() const
{
    return QStringLiteral("<tr><td>%1</td><td>%2</td><td>0,0 1,1</td><td></td></tr>\n")
        .arg(tr("Curve"), tr("%1 to %2 knots, each in,out of 0 … 1")
                              .arg(ToneCurve::kLeastKnots)
                              .arg(ToneCurve::kMostKnots));
}

void Curvesop::build(OpPage *page)
{
    if (!page)
        return;
    page->addLabel(tr("Preset"), OpPage::LabelAlign::Left, false);
    page->addCombo(ToneCurve::presetNames() << tr("Own curve"), 0, true);
    curveIndex = page->addCurve(&curve);
    page->addLabel(tr("In"), OpPage::LabelAlign::Left, false);
    page->addDoubleSpin(0, kTop, 1, 2, 0, false);
    page->addLabel(tr("Out"), OpPage::LabelAlign::Left, false);
    page->addDoubleSpin(0, kTop, 1, 2, 0, true);
    page->addButton(tr("Load…"), false);
    page->addButton(tr("Save…"), true);
    showFields();
}

OpPage *Curvesop::ownPage() const
{
    return ops && ops->current() == this ? ops->page : nullptr;
}

void Curvesop::setCurve(const ToneCurve &shown)
{
    curve = shown;
    showFields();
    if (OpPage *page = ownPage())
        page->setCurve(curveIndex);
}

int Curvesop::presetRow() const
{
    const int preset = curve.presetIndex();
    return preset < 0 ? ToneCurve::presetNames().size() : preset;
}

void Curvesop::showFields()
{
    OpPage *page = ownPage();
    if (!page)
        return;
    page->setCombo(0, presetRow());
    const ToneCurve::Knot knot = curve.knot(curve.chosen);
    page->setDoubleSpin(kSpinIn, knot.x * kTop);
    page->setDoubleSpin(kSpinOut, knot.y * kTop);
}

void Curvesop::curveEdited()
{
    showFields();
}

int Curvesop::combo(int index, int value)
{
    // "Own curve" says what there is already.
    if (index == 0 && value < ToneCurve::presetNames().size())
        setCurve(ToneCurve::preset(value));
    showFields();
    return 1;
}

int Curvesop::dubspin(int index, double value)
{
    ToneCurve::Knot wanted = curve.knot(curve.chosen);
    (index == kSpinIn ? wanted.x : wanted.y) = value / kTop;
    curve.move(curve.chosen, wanted.x, wanted.y);
    OpPage *page = ownPage();
    if (!page)
        return 1;
    page->setCurve(curveIndex);
    page->setCombo(0, presetRow());
    // Where a neighbour stopped the knot the box says so; else it is left as it was typed.
    if (std::abs(curve.knot(curve.chosen).x - wanted.x) * kTop > kShownStep)
        page->setDoubleSpin(kSpinIn, curve.knot(curve.chosen).x * kTop);
    return 1;
}

int Curvesop::button(int index)
{
    exchangeFile(index == kButtonSave);
    return 1;
}

void Curvesop::exchangeFile(bool save)
{
    OpPage *page = ownPage();
    if (!page)
        return;
    const QString title = save ? tr("Save Curve") : tr("Load Curve");
    const QString path = page->askFile(title, tr("Curves (*.json)"), save);
    if (path.isEmpty())
        return;
    QString error;
    ToneCurve read;
    if (save ? !curve.save(path, &error) : !read.load(path, &error))
        workspace()->messageBox(title, error.toHtmlEscaped());
    else if (save)
        workspace()->statusText(tr("Curve saved to %1").arg(path));
    else
        setCurve(read);
}
