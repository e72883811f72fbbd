// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTRESULTSFILEEDITOR_H
#define FGENINTRESULTSFILEEDITOR_H
#include "fgenintmarking.h"
#include "fgenintresultsfile.h"
#include "ftabledata.h"
#include "ftemplatetab.h"

#include <QColor>
#include <functional>

class FAttribCmdSetAverageRows;
class FGenIntResultsFileEdit;
class FGenIntResultsFileEditorHandle;
class FGenIntText;
class FPropertyEditor;
class FSpinBox;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QRadioButton;
class QSplitter;
class QTableWidget;
class QToolButton;
class QVBoxLayout;

/// The editor of a result template: the rules at the left, the sample with the marks of the current
/// rule at the right, and a table of what the reader gives for all of them.
class FGenIntResultsFileEditor : public FTemplateTab
{
    Q_OBJECT
    Q_PROPERTY(QColor highlight_color_AnchorBackground MEMBER sAnchorBackground)
    Q_PROPERTY(QColor highlight_color_AnchorForeground MEMBER sAnchorForeground)
    Q_PROPERTY(QColor highlight_color_ResultLineBackground MEMBER sResultLineBackground)
    Q_PROPERTY(QColor highlight_color_ResultLineForeground MEMBER sResultLineForeground)
    Q_PROPERTY(QColor highlight_color_ColumnBackground MEMBER sColumnBackground)
    Q_PROPERTY(QColor highlight_color_ColumnForeground MEMBER sColumnForeground)
public:
    static constexpr int kLongSample = 1 << 20; ///< characters above which a worker reads
    static QColor sAnchorBackground, sAnchorForeground;
    static QColor sResultLineBackground, sResultLineForeground;
    static QColor sColumnBackground, sColumnForeground;

    FGenIntResultsFileEditor(QWidget *parent, const FExpr<FGenIntResultsFile> &file,
                             const FExpr<FExternComputation> &computation);
    ~FGenIntResultsFileEditor() override;
    void setResultsFile(const FExpr<FGenIntResultsFile> &file);
    std::shared_ptr<FGenIntResultsFile> resultsFile() const { return mResultsFile.getPtr(); }
    void refresh() override;
    /// The rows of the value under edit, from the command that holds them.
    void averageChanged(const FExpr<FUnsigned> &rows) const;
    /// The name to go to when the current one is deleted.
    QString getNextItemAferDeletion(const QComboBox *selector) const;
    /// Proposes rules that read the number there, and makes the one that is chosen.
    void readValueAt(int position, const QPoint &place);
    /// A rule of that kind under a name of its own, as one step.
    void addRule(const FGenIntRule &rule);
    const FGenIntMarks &marks() const { return mMarks; }
    const std::shared_ptr<FTableData> &tableData() const { return mData; }
    /// True while a worker reads a long sample.
    bool isReading() const { return mReading; }
    void showPlace(int line, int column, int length) override;

public Q_SLOTS:
    void fileNameChanged();
    void filePathChanged();
    void numberSeparatorChanged(int);
    void spacesAndTabsSeparatorChanged();
    void regExpSeparatorChanged();
    void selectValueViaCell(int row, int column);
    void selectValueViaHeader(int row);
    void deleteResultsValue(bool);
    void currentResultsValueChanged(const QString &name);
    void currentResultsValueNameChanged(const QString &text);
    void addResultsValue(bool);
    void valueTypeChanged(const QString &type);
    void fileImportTypeChanged(const QString &type);
    void resultsLineChanged(int line);
    void resultsColumnChanged(int column);
    void anchorChanged();
    void occurrenceChanged(const QString &text);
    void averageToggled(bool on);
    void refreshLabels();
    void createParam();
    void refreshResultsPreview();

protected:
    void build() override { init(); }
    void loadText(const QString &text) override;
    void addBackButton(QWidget *button) override;
    void showEvent(QShowEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void init();
    QWidget *makeControls();
    QWidget *makeSample();
    QWidget *row(QVBoxLayout *group, const QString &label, const QList<QWidget *> &fields,
                 const char *name, bool isLast = false);
    void makeGeneral(QVBoxLayout *all);
    void makeSeparators(QVBoxLayout *all);
    void makeValues(QVBoxLayout *all);
    void makePreview(QVBoxLayout *all);
    void registerHandle();
    std::shared_ptr<FGenIntResultsFileValue> currentValue() const;
    template <class Change>
    void write(const char *text, const char *joinKey, Change change);
    void changeFile(const char *text, const std::function<void(FGenIntResultsFile &)> &change);
    void previewSoon();
    void takeTheme();

    void refreshValuesSelector();
    void refreshResultsValues();
    void refreshAnchor();
    void refreshResultsValueType();
    void refreshFileImportType();
    void refreshAverage();
    void refreshValue();
    void enableValue();
    bool renameReferences(const QString &from, const QString &to);

    void setResultsPreviewBlank();
    void fillPreview();
    void highlightCurrentValue();
    void paintMarks();
    void tellDifference();
    void readOnWorker();
    bool hasExpression() const;
    bool isCellSafe(const FGenIntResultsFileValue &value) const;
    QString previewKey() const;
    QStringList runFiles() const;
    const FGenIntText &text();
    static std::unique_ptr<FGenIntText> textOfSample(const QString &shown);
    QStringList sortedNames();
    void refreshRuns();
    void showRun(const QString &path);

    std::shared_ptr<FGenIntResultsFileEditorHandle> mHandle;
    FExpr<FGenIntResultsFile> mResultsFile;
    FGenIntResultsFileEdit *mEdit = nullptr;
    QSplitter *mSplitter = nullptr;
    QLineEdit *mName = nullptr, *mPath = nullptr;
    QRadioButton *mFindNumbers = nullptr, *mCustom = nullptr;
    QWidget *mSpacesRow = nullptr, *mRegExpRow = nullptr;
    QCheckBox *mSpaces = nullptr;
    QLineEdit *mRegExp = nullptr;
    QTableWidget *mTable = nullptr;
    QToolButton *mDelete = nullptr, *mAdd = nullptr;
    QComboBox *mSelector = nullptr;
    QWidget *mTypeRow = nullptr, *mImportRow = nullptr, *mLineRow = nullptr, *mAnchorRow = nullptr;
    QWidget *mOccurrenceRow = nullptr;
    QComboBox *mType = nullptr, *mImportType = nullptr;
    FSpinBox *mLine = nullptr, *mColumn = nullptr;
    QLineEdit *mAnchor = nullptr;
    QComboBox *mOccurrence = nullptr;
    QCheckBox *mAverage = nullptr;
    std::shared_ptr<FAttribCmdSetAverageRows> mAverageRows;
    FExprBase mRowsCommand;
    FPropertyEditor *mRowsField = nullptr;
    QList<QLabel *> mLabels;
    QLabel *mTells = nullptr;     // what is read, where the marks show another place
    QComboBox *mSource = nullptr; // the sample or the file of a run
    QLabel *mSourceTells = nullptr;
    QVBoxLayout *mGeneral = nullptr;
    FGenIntMarks mMarks;
    QString mTypeBefore; // while averaging
    std::shared_ptr<FTableData> mData;
    std::unique_ptr<FGenIntText> mText;
    FGenIntMarks::Places mAnchors; // of a long text, as far as a worker has found them
    QString mShown;                // the text that is marked: the sample's, or a run's
    QString mRunPath;              // of the run's file; empty for the sample
    QString mPreviewed;            // what the table was made from
    int mTask = 0;                 // of the worker that counts
    bool mReading = false, mOwnChange = false, mRefreshing = false;
};
#endif
