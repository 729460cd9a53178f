// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/functions.h"

#include "core/workspace.h"
#include "script/engine/exparser.h"
#include "script/engine/numbers.h"
#include "script/engine/textexpression.h"

#include <QCoreApplication>

#include <algorithm>

namespace
{
/// The arrays of a call. All names but the last are of arrays that must be there; the last is
/// of the one that gets the result, which may be one of them.
struct Operands {
    Operands(FunctionCall &call, int count, int tag)
        : names(namedParameters(call.parser, call.names))
    {
        if (names.size() != count || call.count != 0) {
            call.parser.badParameters(call.opCode, tag);
            return;
        }
        a = lookUpArray(call.parser, names[0]);
        b = count == 3 ? lookUpArray(call.parser, names[1]) : a;
        found = a && b;
    }

    QStringList names;
    const ScriptArray *a = nullptr, *b = nullptr;
    bool found = false;
};

/// Stores a result of the given shape under the last name; false if that cannot be.
bool storeMatrix(exParser &parser, const QString &name, std::vector<double> elements, int rows,
                 int cols)
{
    ScriptArray *array = storeArray(parser, name, std::move(elements));
    if (!array)
        return false;
    array->rows = rows;
    array->cols = cols;
    array->dimensioned = true;
    return true;
}

/// Combines the arrays of a call element by element, in the shape of the first.
template <class Combine>
double elementwise(FunctionCall &call, int arrays, int tag, Combine combine)
{
    const Operands on(call, arrays, tag);
    if (!on.found)
        return 0;
    if (on.a->count() != on.b->count()) {
        call.parser.report(
            QStringLiteral("e: size mismatch between %1 and %2").arg(on.a->name, on.b->name));
        return 0;
    }
    if (on.a->values.empty())
        return call.parser.badParameters(call.opCode, tag);
    std::vector<double> elements;
    if (!resizeArray(call.parser, on.names.last(), &elements, on.a->count()))
        return 0;
    std::transform(on.a->values.begin(), on.a->values.end(), on.b->values.begin(), elements.begin(),
                   combine);
    return storeMatrix(call.parser, on.names.last(), std::move(elements), on.a->rows, on.a->cols);
}

/// The low 32 bits of the nearest whole number, so that masks above 2^31 keep theirs.
uint32_t lowBits(double value)
{
    return uint32_t(wholeBits(value));
}

double fromBits(uint32_t bits)
{
    return int32_t(bits);
}

constexpr int kSumTag = 12, kProductTag = 11, kLogicTag = 200, kSingleTag = 201;
/// So many products are done at once before anybody is asked whether to go on.
constexpr int64_t kProductsAtOnce = int64_t(1) << 26;

/// Tells how far a product is; false if it is to end.
bool goOn(const exParser &parser, int64_t row, int64_t rows)
{
    if (Workspace *space = workspace()) {
        space->progress(QCoreApplication::translate("Script", "Multiplying matrices"), row, rows);
        if (space->cancelRequested())
            return false;
    }
    return !parser.dispatcher || parser.dispatcher->keepRunning();
}

/// Rows of a times columns of b, added in the order of a's columns. False if it was stopped.
bool multiply(const exParser &parser, const ScriptArray &a, const ScriptArray &b, int64_t rows,
              int64_t cols, std::vector<double> *product)
{
    const int64_t inner = a.cols;
    int64_t sinceAsked = 0;
    bool stopped = false, asked = false;
    for (int64_t row = 0; row < rows && !stopped; ++row) {
        double *out = product->data() + row * cols;
        for (int64_t k = 0; k < inner; ++k) {
            const double factor = a.values[size_t(row * inner + k)];
            const double *right = b.values.data() + k * cols;
            for (int64_t col = 0; col < cols; ++col)
                out[col] += factor * right[col];
        }
        sinceAsked += inner * cols;
        if (sinceAsked >= kProductsAtOnce) {
            stopped = !goOn(parser, row + 1, rows);
            asked = true;
            sinceAsked = 0;
        }
    }
    if (asked && workspace())
        workspace()->progress(QString(), 0, 0);
    return !stopped;
}
} // namespace

double fnMatadd(FunctionCall &call)
{
    return elementwise(call, 3, kSumTag, [](double x, double y) { return x + y; });
}

double fnMatsub(FunctionCall &call)
{
    return elementwise(call, 3, kSumTag, [](double x, double y) { return x - y; });
}

double fnMatmul(FunctionCall &call)
{
    const Operands on(call, 3, kProductTag);
    if (!on.found)
        return 0;
    const int64_t inner = on.a->cols;
    const int64_t rows = inner > 0 ? on.a->count() / inner : 0;
    const int64_t cols = inner > 0 ? on.b->count() / inner : 0;
    if (rows <= 0 || cols <= 0)
        return call.parser.badParameters(call.opCode, kProductTag);
    std::vector<double> product;
    if (!resizeArray(call.parser, on.names.last(), &product, rows * cols))
        return 0;
    if (!multiply(call.parser, *on.a, *on.b, rows, cols, &product)) {
        call.parser.report(
            QStringLiteral("e: the product of %1 and %2 was stopped").arg(on.a->name, on.b->name));
        return 0;
    }
    return storeMatrix(call.parser, on.names.last(), std::move(product), int(rows), int(cols))
               ? double(rows)
               : 0;
}

double fnMatand(FunctionCall &call)
{
    return elementwise(call, 3, kLogicTag,
                       [](double x, double y) { return fromBits(lowBits(x) & lowBits(y)); });
}

double fnMator(FunctionCall &call)
{
    return elementwise(call, 3, kLogicTag,
                       [](double x, double y) { return fromBits(lowBits(x) | lowBits(y)); });
}

double fnMatxor(FunctionCall &call)
{
    return elementwise(call, 3, kLogicTag,
                       [](double x, double y) { return fromBits(lowBits(x) ^ lowBits(y)); });
}

double fnMatnegate(FunctionCall &call)
{
    return elementwise(call, 2, kSingleTag,
                       [](double x, double) { return -double(int32_t(lowBits(x))); });
}

double fnMatnot(FunctionCall &call)
{
    return elementwise(call, 2, kSingleTag, [](double x, double) { return double(~lowBits(x)); });
}
