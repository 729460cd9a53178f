// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class exParser;

/// A number as the language writes it, by the variables m_base, m_fieldwidth, m_precision,
/// m_format, m_fillchar and m_nocommas.
QString formatNumber(const exParser &parser, double value);
/// The same without m_base and m_nocommas, as a variable fetched by name gives it.
QString formatFetched(const exParser &parser, double value);
