// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/alpha/keyop.h"

#include "core/rows.h"
#include "core/workspace.h"
#include "operators/base/operatortable.h"
#include "operators/base/oppage.h"
#include "operators/pipeline/colourset.h"

#include <QLocale>

namespace
{
constexpr int kIdSample = 80;
} // namespace

keyOp::keyOp(OperatorTable *table) : DeclaredOp(table)
{
    hotkeyKey = QStringLiteral("KeyOpHotkey");
}

void keyOp::apply(image *target, image *)
{
    const uint8_t *set = workspace() ? workspace()->colorSpace : nullptr;
    if (!set || !target || !target->valid())
        return;
    const image &img = *target;
    parallelRows(img.height, img.width, [&img, set](int first, int end) {
        const int64_t last = int64_t(end) * img.width;
        for (int64_t i = int64_t(first) * img.width; i < last; ++i) {
            const ColourSetPlace place = colourSetPlace(img.red[i], img.green[i], img.blue[i]);
            if (img.gmask[i] != 0 && (set[place.byte] & place.bit) != 0)
                img.alpha[i] = 0;
        }
    });
}

void keyOp::build(OpPage *page)
{
    if (!page)
        return;
    const int64_t count = colourSetSize();
    const QString text = count == 0
                             ? tr("No colours are chosen yet.")
                             : tr("Colours chosen: %1").arg(QLocale().toString(qlonglong(count)));
    page->addLabel(text, OpPage::LabelAlign::Left, true);
    page->addButton(tr("Sample…"), true);
}

/// Sample gathers colours; after its Apply this operator comes back.
int keyOp::button(int index)
{
    if (index != 0 || !ops || !ops->page)
        return 0;
    ops->returnOp = id;
    ops->page->chooseOperator(kIdSample);
    return 1;
}
