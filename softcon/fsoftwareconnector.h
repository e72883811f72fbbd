// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTWARECONNECTOR_H
#define FSOFTWARECONNECTOR_H
#include "fconfigurationgenint.h"
#include "fdefinitiongenint.h"
#include "fgenintcomputation.h"
#include "fsoftconbase.h"
#include "fsoftconitemsize.h"

#include <QAbstractButton>
#include <QDateTime>

class FGenIntResultsFile;
class FGenIntResultsFileEditor;
class FSoftConScene;
class FSoftConView;

/// The workbench of one computation: the overview of its integration as a scene, and an editor for
/// each template file. A computation and its connector go together.
class FSoftwareConnector : public FSoftConBase
{
    Q_OBJECT
    F_CLASS(FSoftwareConnector, FSoftConBase)
public:
    static QString smInputAreaLabel, smOutputAreaLabel, smExportAreaLabel, smImportAreaLabel;
    static QString smIconSize_Largest, smIconSize_Medium, smIconSize_Smallest;

    explicit FSoftwareConnector(const std::string &name = std::string(), QWidget *parent = nullptr,
                                const FExpr<FExternComputation> &computation = nullptr);
    ~FSoftwareConnector() override;
    /// A registered connector; without a computation it makes one.
    static std::shared_ptr<FSoftwareConnector> create(const std::string &name,
                                                      const FExpr<FExternComputation> &computation);
    /// The connector of a computation; null if it has none.
    static std::shared_ptr<FSoftwareConnector> of(const FObject *computation);

    void constructFObject() override;
    void destructFObject() override;
    void retire() override;
    void projectClosed() override;

    /// Takes a computation that no connector holds yet; with \p force that isn't asked.
    void setComputation(const FExpr<FExternComputation> &computation, bool force);
    const FExpr<FExternComputation> &getComputation() const { return mComputation; }
    bool containsComputation(const FExpr<FExternComputation> &computation) const override;
    /// Makes the definition and the configuration that the computation lacks.
    FExpr<FConfigurationGenInt> initNewConfiguration() const;
    FSoftConScene *scene() const;
    FSoftConView *overviewView() const;
    /// The button that shows the overview beside the tabs; none in this window.
    QAbstractButton *overviewButton() const { return mOverviewButton; }

    void setItemSize(SoftConItemSize size);
    SoftConItemSize itemSize() const { return mItemSize; }
    /// By its label; kept in the settings. Another text changes nothing.
    void setItemSizeStr(const QString &text);
    QString getItemSizeStr() const;
    /// The folder that result files were added from last.
    const std::string &getResultsPath() const { return mResultsPath; }
    void setResultsPath(const std::string &path);

    void updateInputFileItems() override;
    void setIconSize(const QSize &size) override;
    void paintRequest() override;
    void resizeRequest() override;
    void setTitles(const std::string &ignored) override;
    void select() const override;
    void settings() override;
    void doUpdate() const override;
    void disableGui(bool disable) override;
    void initScene() override;
    void visitState(FStateVisitor &state) override;
    void stateRestored() override;
    /// False while its computation is not in the project.
    bool isSaved() const override;

    std::vector<QPointer<FGenIntResultsFileEditor>> getResultsFileEditors() const;
    /// Brings the editors of all templates, and the items of entries, up to date.
    void refreshCommandFileEditors();
    /// An expression for the name of a file of any connector, as the user chooses; null if none.
    static FExpr<FString> chooseResultsFile();
    static void refreshAll();
    FExpr<FResultsFileName> addOutputFile(const std::string &path);
    void addInputTemplateFromString(const std::string &content, const std::string &name);
    FExpr<FGenIntResultsFile> addOutputTemplateFromString(const std::string &content,
                                                          const std::string &name);
    void renameTab(const FExpr<FGenIntFile> &file);

    static void initCmds();

public Q_SLOTS:
    void computationDestroyed();
    void prepareToScanForResults();
    /// Scans for files of the last run, or since the connector was made.
    void scanForResults(bool run);
    /// Takes files of other connectors as input files, as the user chooses.
    void connectOtherConnector();
    int addNewTab(const FExpr<FGenIntFile> &file);
    void removeOldTab(const FExpr<FGenIntFile> &file);
    void closeTab(int index);
    void gotoTab(const FExpr<FGenIntFile> &file);
    void gotoOverview();
    void gotFocus();
    void disableGui(bool flag, int dbId) override;

private:
    using FSoftConBase::init;
    void init();
    void init(const std::shared_ptr<FSoftwareConnector> &source);
    static std::shared_ptr<FSoftwareConnector> createForScript(const std::string &name);
    void setComputationCommand(const FExpr<FExternComputation> &computation);
    FExpr<FExternComputation> computationForScript() const { return mComputation; }
    void dropScene();
    int tabOf(const FObject *file) const;
    void connectScene(FSoftConScene *scene);
    std::shared_ptr<FGenIntComputation> genIntComputation() const;
    static std::string helpText();

    FExpr<FExternComputation> mComputation;
    mutable FExpr<FDefinitionGenInt> mDefinition;
    QPointer<FSoftConView> mOverviewView;
    QDateTime mScanStartTime = QDateTime::currentDateTime();
    SoftConItemSize mItemSize = SoftConItemSize::Medium;
    std::string mResultsPath;
    QAbstractButton *mOverviewButton = nullptr;
    bool mComputationDestroyed = false;
};
#endif
