// SPDX-License-Identifier: Apache-2.0
#ifndef FTECPLOTREADER_H
#define FTECPLOTREADER_H
#include <QByteArray>
#include <QString>
#include <string>
#include <vector>

/// The data of a Tecplot file: one column of numbers per variable, the zones one after another.
struct FTecplotData
{
    std::vector<std::string> variables; // in UTF-8, as many as columns
    std::vector<std::vector<double>> columns;
    QString title;
};

/// Reads Tecplot ASCII text with ordered zones in POINT or BLOCK packing. A zone without I, J and K
/// takes all numbers up to the next record. Titles, labels, texts, geometries and auxiliary data
/// are passed over.
///
/// Returns false with line, found and expected in \p *why, and leaves \p *data as it was, for
/// anything that would make the columns doubtful: binary files, finite element zones, values at
/// cell centres, shared or passive variables, numbers too few or too many.
bool readTecplot(const QByteArray &text, FTecplotData *data, QString *why);
#endif
