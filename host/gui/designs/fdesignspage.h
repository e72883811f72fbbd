// SPDX-License-Identifier: Apache-2.0
#ifndef FDESIGNSPAGE_H
#define FDESIGNSPAGE_H
#include <QWidget>

/// The page "Designs": one row a design against variables, states of computations and the
/// parameters that depend on results.
class FDesignsPage : public QWidget
{
    Q_OBJECT
public:
    explicit FDesignsPage(QWidget *parent = nullptr);

Q_SIGNALS:
    /// A result value was double clicked: the file, the line (from 1) and the columns (from 0,
    /// length) where the number was read.
    void placeRequested(const QString &file, int line, int column, int length);
};
#endif
