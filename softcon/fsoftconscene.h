// SPDX-License-Identifier: Apache-2.0
#ifndef FSOFTCONSCENE_H
#define FSOFTCONSCENE_H
#include "fbasictype.h"
#include "fgenintfile.h"
#include "fsoftconarea.h"
#include "fsoftconitemsize.h"
#include "fsoftconitemstructure.h"

#include <QGraphicsScene>
#include <unordered_map>
#include <unordered_set>

class FEntry;
class FExternComputation;
class FGenIntComputation;
class FSoftConDialog;
class FSoftConLayout;
class FSoftConObjectItem;
class FSoftwareConnector;
class FSoftwareConnectorItem;
class QAction;
class QGraphicsProxyWidget;
class QMenu;

/// The overview of an integration: the computation in the centre, and around it the input geometry,
/// the input files, the result files and the result values. It holds no data of the model: each
/// item stands for an object, and doUpdate brings the items in line with the model.
class FSoftConScene : public QGraphicsScene
{
    Q_OBJECT
public:
    static constexpr size_t kMostItems = 60;            ///< that are made at once
    static constexpr long long kLargestFile = 31457280; ///< bytes of a template

    FSoftConScene(QObject *parent, const FExpr<FSoftwareConnector> &connector);
    ~FSoftConScene() override;

    void setComputation(const FExpr<FExternComputation> &computation);
    const FExpr<FExternComputation> &getComputation() const { return mComputation; }
    std::shared_ptr<FGenIntComputation> genIntComputation() const;
    std::shared_ptr<FSoftwareConnector> getConnector() const;
    FSoftConLayout *getLayout() const { return mLayout.get(); }
    /// Told by the item of the computation.
    void setComputationItemSize(const QSizeF &size);
    /// SoftConNoArea outside the four quadrants.
    SoftConArea getArea(const QPointF &point) const;
    void addItem(FSoftwareConnectorItem *item);
    /// The item ends.
    void forget(FSoftwareConnectorItem *item) { mItems.erase(item); }
    /// Makes the item of an object; for the prototype of a class a new object too. Null, and a
    /// message, if there is no item for it.
    FSoftwareConnectorItem *createItem(QGraphicsItem *parent, const FExpr<FObject> &object,
                                       const std::string &filePath,
                                       const std::string &rootPath) const;
    void createItems(const std::vector<std::shared_ptr<FSoftConItemStructure>> &structures) const;
    /// Makes items of the files that the computation has left later than \p since and that are no
    /// pure text, as long as the button says so.
    void scanForResults(const QDateTime &since) const;
    void scanDirForResults(const QString &dir, const QString &root,
                           std::vector<std::shared_ptr<FSoftConItemStructure>> &out,
                           const QDateTime &since) const;
    /// True if an item of a result file holds the name of the file, wherever that lies.
    bool containsImport(const QString &path) const;
    bool isScanning() const;
    /// Asks what and where to, and writes a set-up file.
    void exportIntegration() const;
    void createItems(const QStringList &files, const FExpr<FObject> &object,
                     const QString &rootPath, bool relative) const;
    void collectItems(const QString &path, const FExpr<FObject> &object, const QString &rootPath,
                      std::vector<std::shared_ptr<FSoftConItemStructure>> &out,
                      bool relative) const;
    /// Runs a file dialog and makes items of what is chosen.
    void addItem(FSoftConDialog *dialog, const FExpr<FObject> &object) const;
    void updateInputFileItems();
    void refreshEntryItems();
    void setTabName(const FExpr<FGenIntFile> &file);
    void setItemSize(SoftConItemSize size);
    void calcItemRatios() const;
    /// The object editor shows the object of the item.
    void callEditor(const FSoftConObjectItem *item);
    void deleteItem(FSoftConObjectItem *item);
    void gotoTab(const FExpr<FGenIntFile> &file);
    void setNeedsRedraw() { mNeedsRedraw = true; }

    // Drag and drop
    std::shared_ptr<FObjectList>
    extractFObjectMimeData(const QGraphicsSceneDragDropEvent *event) const;
    std::vector<std::shared_ptr<FSoftConItemStructure>>
    extractFileMimeData(const QGraphicsSceneDragDropEvent *event) const;
    /// Empty if a template may be so large, else the size in words; told in the log with a path.
    std::string checkFileSize(long long size, const QString &path) const;

    virtual void init();
    virtual void doUpdate() const;

    static QString areaLabel(SoftConArea area);
    const std::unordered_set<FSoftwareConnectorItem *> &allItems() const { return mItems; }

Q_SIGNALS:
    void addViewerTab(const FExpr<FGenIntFile> &file);
    void removeViewerTab(const FExpr<FGenIntFile> &file);
    void gotoViewerTab(const FExpr<FGenIntFile> &file);

public Q_SLOTS:
    void selectItem();
    void updateItems(int index);
    void deleteItem(QAction *action);
    void addInput();
    void addOutput();
    void addExport();
    void addFile();
    void addImport();
    void showDocu(QString label);
    void redraw() const;
    void computationNameChanged(const std::shared_ptr<FObject> &object, const QString &name,
                                unsigned dbId);
    void resizeItem(QAction *action);
    void runComputation();
    void readResults();
    void showOutputFilesPreview();

protected:
    void contextMenuEvent(QGraphicsSceneContextMenuEvent *event) override;
    void dragEnterEvent(QGraphicsSceneDragDropEvent *event) override;
    void dragMoveEvent(QGraphicsSceneDragDropEvent *event) override;
    void dropEvent(QGraphicsSceneDragDropEvent *event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void drawForeground(QPainter *painter, const QRectF &rect) override;
    void focusInEvent(QFocusEvent *event) override;

private:
    FSoftwareConnectorItem *makeItem(QGraphicsItem *parent, const FExpr<FObject> &object,
                                     const std::string &filePath,
                                     const std::string &rootPath) const;
    FSoftwareConnectorItem *makeEntryItem(QGraphicsItem *parent,
                                          const std::shared_ptr<FEntry> &entry) const;
    bool isPartAlready(const std::string &filePath, const std::string &rootPath) const;
    bool fits(const FSoftConObjectItem &item) const;
    std::vector<FExpr<FObject>> wantedObjects() const;
    QGraphicsProxyWidget *addFurniture(QWidget *widget);
    void placeFurniture(const QRectF &ground, double titleHeight, const QSize &button) const;
    void addIn(SoftConArea area);
    QGraphicsItem *itemUnder(const QPointF &place) const;
    bool isOverItem(const QPointF &place) const;
    void moveFocus(int key);
    void fillMenu(QMenu *menu, const QPointF &place);
    FSoftConObjectItem *focusedItem() const;
    void dropLater(FSoftwareConnectorItem *item) const;

    FExpr<FExternComputation> mComputation;
    FExpr<FSoftwareConnector> mConnector;
    QGraphicsProxyWidget *mSplitLine = nullptr, *mInputArea = nullptr, *mResultArea = nullptr,
                         *mTopTitleBar = nullptr, *mLeftTitleBar = nullptr,
                         *mRightTitleBar = nullptr, *mAddInputButton = nullptr,
                         *mAddOutputButton = nullptr, *mAddExportButton = nullptr,
                         *mAddImportButton = nullptr, *mScanButton = nullptr,
                         *mConnectButton = nullptr, *mInputTipButton = nullptr,
                         *mOutputTipButton = nullptr, *mExportTipButton = nullptr,
                         *mImportTipButton = nullptr, *mInputLabel = nullptr,
                         *mOutputLabel = nullptr, *mExportLabel = nullptr, *mImportLabel = nullptr;
    QSizeF mComputationItemSize{100.0, 100.0};
    QRectF mComputationItemRect;
    mutable std::unordered_map<SoftConArea, QRectF> mAreas;
    FExpr<FObject> mCurrentObject;
    mutable bool mNeedsRedraw = false;
    std::shared_ptr<FSoftConLayout> mLayout;
    mutable std::unordered_set<FSoftwareConnectorItem *> mItems;
};
#endif
