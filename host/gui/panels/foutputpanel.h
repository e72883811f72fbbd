// SPDX-License-Identifier: Apache-2.0
#ifndef FOUTPUTPANEL_H
#define FOUTPUTPANEL_H
#include <QWidget>
#include <memory>

class FDesign;
class FExternComputation;
class QCheckBox;
class QComboBox;
class QPlainTextEdit;
class QTimer;

/// The panel "Output of runs": what a program prints, live; the last 64 KiB of the chosen run.
class FOutputPanel : public QWidget
{
    Q_OBJECT
public:
    static constexpr qint64 kShown = 64 * 1024; ///< bytes
    explicit FOutputPanel(QWidget *parent = nullptr);
    /// Shows the run of a computation for a design, and no longer follows what starts.
    void showRun(const std::shared_ptr<FExternComputation> &computation,
                 const std::shared_ptr<FDesign> &design);

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void listRuns();
    void readOn();
    QComboBox *mRuns;
    QCheckBox *mFollow;
    QPlainTextEdit *mText;
    QTimer *mTimer;
    QString mFolder;
    qint64 mSizes[2] = {-1, -1};
};
#endif
