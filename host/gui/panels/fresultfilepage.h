// SPDX-License-Identifier: Apache-2.0
#ifndef FRESULTFILEPAGE_H
#define FRESULTFILEPAGE_H
#include <QWidget>

class FEditor;
class QLabel;

/// A file of a run, as it lies on disk, at the place where a value was read. Of a very large file
/// the surroundings of the place.
class FResultFilePage : public QWidget
{
    Q_OBJECT
public:
    static constexpr qint64 kWhole = 32 << 20; ///< bytes up to which a file is shown whole
    explicit FResultFilePage(QWidget *parent = nullptr);
    /// \p line from 1, \p column from 0. What can't be read is told in the page.
    void show(const QString &path, int line, int column, int length);
    const QString &path() const { return mPath; }
    FEditor *editor() const { return mEditor; }

private:
    QString mPath;
    QLabel *mPlace;
    FEditor *mEditor;
};
#endif
