// SPDX-License-Identifier: Apache-2.0
#include "fboundedexpression.h"

#include <QStringList>
#include <algorithm>
#include <numeric>
#include <vector>

QString FBoundedExpression::refusal(const QString &expression)
{
    constexpr double most = 2000;  // the engine's table has the square of it
    std::vector<double> groups{0}; // characters that the open groups match when written out
    double atom = 0;               // the last of them, which a count repeats
    const int n = expression.size();
    for (int i = 0; i < n && groups.front() <= most; ++i) {
        const QChar c = expression[i];
        if (c == QLatin1Char('(')) {
            groups.push_back(0);
            continue;
        }
        if (c == QLatin1Char('{')) {
            const int end = expression.indexOf(QLatin1Char('}'), i);
            double count = 1;
            for (const QString &number : expression.mid(i + 1, end - i - 1).split(QLatin1Char(',')))
                count = std::max(count, number.toDouble());
            groups.back() += atom * (count - 1);
            atom *= count;
            i = end < 0 ? n : end;
            continue;
        }
        if (c == QLatin1Char('*') || c == QLatin1Char('+') || c == QLatin1Char('?') ||
            c == QLatin1Char('|'))
            continue;
        atom = 1;
        if (c == QLatin1Char(')')) {
            atom = groups.back();
            if (groups.size() > 1)
                groups.pop_back();
        } else if (c == QLatin1Char('\\')) {
            ++i;
        } else if (c == QLatin1Char('[')) {
            i = expression.indexOf(QLatin1Char(']'), i + 2);
            i = i < 0 ? n : i;
        }
        groups.back() += atom;
        if (atom > most)
            break;
    }
    return std::accumulate(groups.begin(), groups.end(), 0.0) <= most
               ? QString()
               : QStringLiteral("its repetitions, written out, are longer than 2000 characters");
}

QRegExp FBoundedExpression::compiled(const QString &expression)
{
    return QRegExp(refusal(expression).isEmpty() ? expression : QStringLiteral("(?!)"));
}
