// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/engine/functions.h"

#include "script/engine/exparser.h"
#include "script/engine/numberformat.h"
#include "script/engine/numbers.h"
#include "script/engine/textexpression.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace
{
constexpr int kAny = INT32_MAX; ///< of numbers: as many as there are
/// An array full of zeros is not worth a message for each.
constexpr int kMostWarnings = 100;

/// The array that a call names first; null, reported, if it or the right number of numbers is
/// missing.
ScriptArray *arrayOf(FunctionCall &call, int least, int most, int tag)
{
    if (!takesNumbers(call, least, most, tag))
        return nullptr;
    return lookUpArray(call.parser, namedParameters(call.parser, call.names).value(0));
}

/// Gives a call's new array its elements from `make`, which gets the index; its size.
template <class Make>
double createArray(FunctionCall &call, int count, Make make)
{
    const QString name = namedParameters(call.parser, call.names).value(0);
    std::vector<double> elements;
    if (!resizeArray(call.parser, name, &elements, count))
        return 0;
    for (int i = 0; i < count; ++i)
        elements[size_t(i)] = make(i);
    return storeArray(call.parser, name, std::move(elements)) ? count : 0;
}

/// The place that an index means, or row and column; -1, reported, for one outside.
int64_t placeOf(exParser &parser, const ScriptArray &array, const double *index, int numbers)
{
    int64_t place = wholeNumber(index[0]);
    if (numbers == 2) {
        const int64_t row = place, column = wholeNumber(index[1]);
        if (row < 0 || row >= array.rows || column < 0 || column >= array.cols)
            parser.report(
                QStringLiteral("w: array indices do not match array %1 bounds").arg(array.name));
        place = row * array.cols + column;
    }
    if (place >= 0 && place < array.count())
        return place;
    parser.report(QStringLiteral("e: array access past array %1 end").arg(array.name));
    return -1;
}

/// Opens a gap of `count` elements before `place`; false, reported, beyond what there may be.
bool openGap(exParser &parser, ScriptArray *array, int64_t place, int count)
{
    std::vector<double> &values = array->values;
    const size_t before = values.size();
    if (!resizeArray(parser, array->name, &values, int64_t(before) + count))
        return false;
    std::move_backward(values.begin() + place, values.begin() + int64_t(before), values.end());
    array->lineUp();
    return true;
}

/// Puts the numbers of a call before `place`; the size.
double putIn(FunctionCall &call, ScriptArray *array, int64_t place)
{
    if (openGap(call.parser, array, place, call.count))
        std::copy_n(call.a, call.count, array->values.begin() + place);
    return array->count();
}

/// Changes each element by the one number of the call.
template <class Change>
double changeEach(FunctionCall &call, int tag, Change change)
{
    ScriptArray *array = arrayOf(call, 1, 1, tag);
    if (array)
        for (double &value : array->values)
            value = change(value, call.a[0]);
    return 0;
}

constexpr int kArithmeticTag = 14;
} // namespace

// --- Creating and filling -----------------------------------------------------------------

double fnArray(FunctionCall &call)
{
    return createArray(call, call.count, [&call](int i) { return call.a[i]; });
}

double fnBits(FunctionCall &call)
{
    if (!takesNumbers(call, 2, 22))
        return 0;
    const uint64_t bits = wholeBits(call.a[0]);
    const int count = std::clamp(wholeNumber(call.a[1]), 1, 64);
    uint64_t mask = uint64_t(1) << ((count - 1) % 32); // beyond 32 bits it runs out
    return createArray(call, count, [bits, &mask](int) {
        const bool set = bits & mask;
        mask >>= 1;
        return double(set);
    });
}

double fnBytes(FunctionCall &call)
{
    if (!takesNumbers(call, 2, 21))
        return 0;
    const uint64_t bits = wholeBits(call.a[0]);
    const int count = std::clamp(wholeNumber(call.a[1]), 1, 8);
    return createArray(call, count, [bits, count](int i) {
        return double(bits >> (8 * (count - 1 - i)) & 255); // the highest first
    });
}

double fnDuplicate(FunctionCall &call)
{
    const QStringList names = namedParameters(call.parser, call.names);
    if (names.size() != 2)
        return call.parser.badParameters(call.opCode, 23);
    const ScriptArray *array = lookUpArray(call.parser, names[0]);
    if (!array)
        return 0;
    if (names[1].toLower() == array->name) {
        call.parser.report(
            QStringLiteral("e: arrays cannot have same name \"G%1EG\"").arg(array->name));
        return 0;
    }
    std::vector<double> elements;
    if (!resizeArray(call.parser, names[1], &elements, array->count()))
        return 0;
    std::copy(array->values.begin(), array->values.end(), elements.begin());
    ScriptArray *copy = storeArray(call.parser, names[1], std::move(elements));
    if (!copy)
        return 0;
    copy->dimensioned = array->dimensioned;
    copy->rows = array->rows;
    copy->cols = array->cols;
    copy->strings = array->strings;
    return copy->count();
}

double fnAppend(FunctionCall &call)
{
    ScriptArray *array = arrayOf(call, 1, kAny, 30);
    return array ? putIn(call, array, array->count()) : 0;
}

double fnPrepend(FunctionCall &call)
{
    ScriptArray *array = arrayOf(call, 1, kAny, 31);
    return array ? putIn(call, array, 0) : 0;
}

double fnInsert(FunctionCall &call)
{
    ScriptArray *array = arrayOf(call, 2, 2, 26);
    if (!array)
        return 0;
    const int64_t place = placeOf(call.parser, *array, call.a, 1);
    if (place >= 0 && openGap(call.parser, array, place, 1))
        array->values[size_t(place)] = call.a[1];
    return array->count();
}

double fnRemove(FunctionCall &call)
{
    ScriptArray *array = arrayOf(call, 1, 1, 28);
    if (!array)
        return 0;
    const int64_t place = placeOf(call.parser, *array, call.a, 1);
    if (place >= 0) {
        array->values.erase(array->values.begin() + place);
        array->lineUp();
    }
    return array->count();
}

// --- Single elements and measures -----------------------------------------------------------

double fnAssign(FunctionCall &call)
{
    ScriptArray *array = arrayOf(call, 2, 3, 27);
    if (!array)
        return 0;
    const int64_t place = placeOf(call.parser, *array, call.a + 1, call.count - 1);
    if (place >= 0)
        array->values[size_t(place)] = call.a[0];
    return array->count();
}

double fnValue(FunctionCall &call)
{
    const ScriptArray *array = arrayOf(call, 1, 2, 29);
    if (!array)
        return 0;
    const int64_t place = placeOf(call.parser, *array, call.a, call.count);
    return place >= 0 ? array->values[size_t(place)] : 0;
}

double fnIndexof(FunctionCall &call)
{
    const ScriptArray *array = arrayOf(call, 1, 2, 6);
    if (!array)
        return 0;
    const int start = call.count == 2 ? wholeNumber(call.a[1]) : 0;
    for (int i = std::max(start, 0); i < array->count(); ++i)
        if (array->values[size_t(i)] == call.a[0])
            return i;
    return -1;
}

double fnSwap(FunctionCall &call)
{
    ScriptArray *array = arrayOf(call, 2, 2, 24);
    if (!array)
        return 0;
    const int64_t first = placeOf(call.parser, *array, call.a, 1);
    const int64_t second = placeOf(call.parser, *array, call.a + 1, 1);
    if (first >= 0 && second >= 0)
        std::swap(array->values[size_t(first)], array->values[size_t(second)]);
    return array->count();
}

double fnSize(FunctionCall &call)
{
    const ScriptArray *array = arrayOf(call, 0, 0, 25);
    return array ? array->count() : 0;
}

double fnAcols(FunctionCall &call)
{
    const ScriptArray *array = arrayOf(call, 0, 0, 8);
    return array ? array->cols : 0;
}

double fnArows(FunctionCall &call)
{
    const ScriptArray *array = arrayOf(call, 0, 0, 9);
    return array ? array->rows : 0;
}

double fnDim(FunctionCall &call)
{
    ScriptArray *array = arrayOf(call, 2, 2, 10);
    if (!array)
        return 0;
    const int rows = wholeNumber(call.a[0]), cols = wholeNumber(call.a[1]);
    if (rows < 0 || cols < 0 || int64_t(rows) * cols != array->count()) {
        call.parser.report(QStringLiteral("e: array \"G%1EG\" cannot be dimensioned to %2,%3")
                               .arg(array->name, QString::number(rows), QString::number(cols)));
        return 0;
    }
    array->rows = rows;
    array->cols = cols;
    array->dimensioned = true;
    return 0;
}

double fnArrayAdd(FunctionCall &call)
{
    const ScriptArray *array = arrayOf(call, 0, 0, 15);
    double sum = 0;
    if (array)
        for (const double value : array->values)
            sum += value;
    return sum;
}

double fnMaxdigits(FunctionCall &call)
{
    const ScriptArray *array = arrayOf(call, 0, 0, 7);
    int longest = 0;
    if (array) {
        const NumberFormat format(call.parser);
        for (const double value : array->values)
            longest = std::max(longest, int(format.text(value).size()));
    }
    return longest;
}

// --- All elements ---------------------------------------------------------------------------

double fnPlus(FunctionCall &call)
{
    return changeEach(call, kArithmeticTag, [](double value, double x) { return value + x; });
}

double fnMinus(FunctionCall &call)
{
    return changeEach(call, kArithmeticTag, [](double value, double x) { return value - x; });
}

double fnMinuend(FunctionCall &call)
{
    return changeEach(call, kArithmeticTag, [](double value, double x) { return x - value; });
}

double fnArrayMultiply(FunctionCall &call)
{
    return changeEach(call, kArithmeticTag, [](double value, double x) { return value * x; });
}

double fnArrayDivide(FunctionCall &call)
{
    ScriptArray *array = arrayOf(call, 1, 1, kArithmeticTag);
    if (!array)
        return 0;
    double divisor = call.a[0];
    if (divisor == 0) {
        call.parser.report(
            QStringLiteral("w: array \"%1\" attempted division by zero").arg(array->name));
        divisor = DBL_MIN;
    }
    for (double &value : array->values)
        value /= divisor;
    return 0;
}

double fnDividend(FunctionCall &call)
{
    ScriptArray *array = arrayOf(call, 1, 1, kArithmeticTag);
    if (!array)
        return 0;
    int zeros = 0;
    for (int i = 0; i < array->count(); ++i) {
        double &value = array->values[size_t(i)];
        if (value == 0) {
            value = DBL_MIN;
            if (++zeros <= kMostWarnings)
                call.parser.report(QStringLiteral("w: array \"G%1EG\" attempted division by "
                                                  "zero, row %2, col %3")
                                       .arg(array->name, QString::number(i / array->cols),
                                            QString::number(i % array->cols)));
        }
        value = call.a[0] / value;
    }
    if (zeros > kMostWarnings)
        call.parser.report(QStringLiteral("w: array \"G%1EG\" has %2 more zeros")
                               .arg(array->name, QString::number(zeros - kMostWarnings)));
    return 0;
}

double fnLimit(FunctionCall &call)
{
    ScriptArray *array = arrayOf(call, 2, 2, 16);
    if (!array)
        return 0;
    const auto [low, high] = std::minmax(call.a[0], call.a[1]);
    for (double &value : array->values)
        value = std::min(std::max(value, low), high);
    return 0;
}

double fnMinimize(FunctionCall &call)
{
    return changeEach(call, 17, [](double value, double x) { return value > x ? x : value; });
}

double fnMaximize(FunctionCall &call)
{
    return changeEach(call, 18, [](double value, double x) { return value < x ? x : value; });
}

double fnNormalize(FunctionCall &call)
{
    ScriptArray *array = arrayOf(call, 0, 1, 19);
    if (!array)
        return 0;
    double divisor = 0;
    if (call.count == 1)
        divisor = call.a[0] == 0 ? 1 : std::abs(call.a[0]);
    else // nothing but zeros becomes not-a-number
        for (const double value : array->values)
            divisor = std::max(divisor, std::abs(value));
    for (double &value : array->values)
        value /= divisor;
    return 0;
}

double fnReverse(FunctionCall &call)
{
    if (ScriptArray *array = arrayOf(call, 0, 0, 20))
        std::reverse(array->values.begin(), array->values.end());
    return 0;
}

double fnShiftleft(FunctionCall &call)
{
    ScriptArray *array = arrayOf(call, 0, 1, 33);
    if (!array || array->values.empty())
        return 0;
    std::vector<double> &values = array->values;
    const double dropped = values.front();
    std::move(values.begin() + 1, values.end(), values.begin());
    values.back() = call.count == 1 ? call.a[0] : 0;
    return dropped;
}

double fnShiftright(FunctionCall &call)
{
    ScriptArray *array = arrayOf(call, 0, 1, 32);
    if (!array || array->values.empty())
        return 0;
    std::vector<double> &values = array->values;
    const double dropped = values.back();
    std::move_backward(values.begin(), values.end() - 1, values.end());
    values.front() = call.count == 1 ? call.a[0] : 0;
    return dropped;
}
