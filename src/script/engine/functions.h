// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "script/engine/optable.h"

/// The implementations that the operator table names, by subject. Each takes the parser for
/// the state of the run and for reports; none of them fails but by a report and a result of 0.

// Arithmetic, comparisons, the functions of analysis: functions_math.cpp
double fnAbs(exParser &parser, double x);
double fnAcos(exParser &parser, double x);
double fnAcosh(exParser &parser, double x);
double fnAlog(exParser &parser, double x);
double fnAsin(exParser &parser, double x);
double fnAsinh(exParser &parser, double x);
double fnAtan(exParser &parser, double x);
double fnAtanh(exParser &parser, double x);
double fnCbrt(exParser &parser, double x);
double fnCeil(exParser &parser, double x);
double fnChup(exParser &parser, double x);
double fnCos(exParser &parser, double x);
double fnCosh(exParser &parser, double x);
double fnDec(exParser &parser, double x);
double fnExp(exParser &parser, double x);
double fnFact(exParser &parser, double x);
double fnFloor(exParser &parser, double x);
double fnFrac(exParser &parser, double x);
double fnInc(exParser &parser, double x);
double fnLn(exParser &parser, double x);
double fnLog(exParser &parser, double x);
double fnNegate(exParser &parser, double x);
double fnSin(exParser &parser, double x);
double fnSinh(exParser &parser, double x);
double fnSqrt(exParser &parser, double x);
double fnTan(exParser &parser, double x);
double fnTanh(exParser &parser, double x);
double fnIdentity(exParser &parser, double x);
double fnAdd(exParser &parser, double x, double y);
double fnSubtract(exParser &parser, double x, double y);
double fnTimes(exParser &parser, double x, double y);
double fnOver(exParser &parser, double x, double y);
double fnRemainder(exParser &parser, double x, double y);
double fnEqual(exParser &parser, double x, double y);
double fnUnequal(exParser &parser, double x, double y);
double fnGreater(exParser &parser, double x, double y);
double fnGreaterOrEqual(exParser &parser, double x, double y);
double fnLess(exParser &parser, double x, double y);
double fnLessOrEqual(exParser &parser, double x, double y);
double fnAmix(FunctionCall &call);
double fnAtan2(FunctionCall &call);
double fnHypo(FunctionCall &call);
double fnLength(FunctionCall &call);
double fnMod(FunctionCall &call);
double fnPercent(FunctionCall &call);
double fnPow(FunctionCall &call);
double fnRound(FunctionCall &call);
double fnSum(FunctionCall &call);
double fnAvg(FunctionCall &call);
double fnCount(FunctionCall &call);
double fnMax(FunctionCall &call);
double fnMin(FunctionCall &call);
double fnMedian(FunctionCall &call);

// Units and electronics: functions_units.cpp
double fnBtow(exParser &parser, double x);
double fnCtok(exParser &parser, double x);
double fnCtor(exParser &parser, double x);
double fnPrat(exParser &parser, double x);
double fnVrat(exParser &parser, double x);
double fnDctodf(exParser &parser, double x);
double fnDftodc(exParser &parser, double x);
double fnDtow(exParser &parser, double x);
double fnFtok(exParser &parser, double x);
double fnFtom(exParser &parser, double x);
double fnFtor(exParser &parser, double x);
double fnFtow(exParser &parser, double x);
double fnGtod(exParser &parser, double x);
double fnKtoc(exParser &parser, double x);
double fnKtof(exParser &parser, double x);
double fnKtor(exParser &parser, double x);
double fnLton(exParser &parser, double x);
double fnMtof(exParser &parser, double x);
double fnNtol(exParser &parser, double x);
double fnRtoc(exParser &parser, double x);
double fnRtof(exParser &parser, double x);
double fnRtok(exParser &parser, double x);
double fnStoe(exParser &parser, double x);
double fnRtod(exParser &parser, double x);
double fnDtog(exParser &parser, double x);
double fnDtor(exParser &parser, double x);
double fnWtob(exParser &parser, double x);
double fnWtod(exParser &parser, double x);
double fnCtof(FunctionCall &call);
double fnDbm(FunctionCall &call);
double fnDbpr(FunctionCall &call);
double fnDbvr(FunctionCall &call);
double fnDtos(FunctionCall &call);
double fnDtov(FunctionCall &call);
double fnFtoc(FunctionCall &call);
double fnStodbm(FunctionCall &call);
double fnSunits(FunctionCall &call);
double fnProduct(FunctionCall &call);
double fnQuotient(FunctionCall &call);
double fnSquareByOther(FunctionCall &call);
double fnIrtop(FunctionCall &call);
double fnInParallel(FunctionCall &call);
double fnPitor(FunctionCall &call);
double fnPrtoi(FunctionCall &call);
double fnPrtoe(FunctionCall &call);

// Samples and the selection of the current image: functions_image.cpp
double fnAam(FunctionCall &call);
double fnCmix(FunctionCall &call);
double fnLinem(FunctionCall &call);
double fnReadch(FunctionCall &call);
double fnReadm(FunctionCall &call);
double fnSetm(FunctionCall &call);
double fnWritem(FunctionCall &call);
double fnWritep(FunctionCall &call);

// A matrix over the current image: functions_convolve.cpp
double fnConvolve(FunctionCall &call);

// The numeric user stack, chance, user functions, declarations, the slider: functions_calls.cpp
double fnPush(exParser &parser, double x);
double fnPop(exParser &parser);
double fnRnd(exParser &parser, double x);
double fnSeed(exParser &parser, double x);
double fnDparm(exParser &parser, double x);
double fnDeclare(FunctionCall &call);
double fnFunc(FunctionCall &call);
double fnSlider(FunctionCall &call);

// Arrays: functions_arrays.cpp
double fnArray(FunctionCall &call);
double fnArrayAdd(FunctionCall &call);
double fnAppend(FunctionCall &call);
double fnAssign(FunctionCall &call);
double fnBits(FunctionCall &call);
double fnBytes(FunctionCall &call);
double fnDim(FunctionCall &call);
double fnArrayDivide(FunctionCall &call);
double fnDividend(FunctionCall &call);
double fnDuplicate(FunctionCall &call);
double fnValue(FunctionCall &call);
double fnIndexof(FunctionCall &call);
double fnInsert(FunctionCall &call);
double fnLimit(FunctionCall &call);
double fnMinimize(FunctionCall &call);
double fnMinus(FunctionCall &call);
double fnMinuend(FunctionCall &call);
double fnMaxdigits(FunctionCall &call);
double fnMaximize(FunctionCall &call);
double fnArrayMultiply(FunctionCall &call);
double fnNormalize(FunctionCall &call);
double fnPlus(FunctionCall &call);
double fnPrepend(FunctionCall &call);
double fnRemove(FunctionCall &call);
double fnReverse(FunctionCall &call);
double fnShiftleft(FunctionCall &call);
double fnShiftright(FunctionCall &call);
double fnSize(FunctionCall &call);
double fnSwap(FunctionCall &call);
double fnAcols(FunctionCall &call);
double fnArows(FunctionCall &call);

// Matrices: functions_matrices.cpp
double fnMatadd(FunctionCall &call);
double fnMatsub(FunctionCall &call);
double fnMatmul(FunctionCall &call);
double fnMatand(FunctionCall &call);
double fnMator(FunctionCall &call);
double fnMatxor(FunctionCall &call);
double fnMatnegate(FunctionCall &call);
double fnMatnot(FunctionCall &call);

// Text: the fields of the image, dialogs, the string stack: functions_text.cpp
QString fnAltitude(TextCall &call);
QString fnAnnotation(TextCall &call);
QString fnAsk(TextCall &call);
QString fnAuthor(TextCall &call);
QString fnCopyright(TextCall &call);
QString fnCreatetime(TextCall &call);
QString fnTparm(TextCall &call);
QString fnImagename(TextCall &call);
QString fnLatitude(TextCall &call);
QString fnLayername(TextCall &call);
QString fnLongitude(TextCall &call);
QString fnMastername(TextCall &call);
QString fnModtime(TextCall &call);
QString fnDate(TextCall &call);
QString fnTime(TextCall &call);
QString fnPops(TextCall &call);
QString fnSoftware(TextCall &call);
QString fnTruth(TextCall &call);
QString fnVerbatim(TextCall &call);
double fnPushs(FunctionCall &call);
double fnTwidth(FunctionCall &call);
