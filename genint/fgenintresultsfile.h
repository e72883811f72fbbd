// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTRESULTSFILE_H
#define FGENINTRESULTSFILE_H
#include "fcmd.h"
#include "fgenintfile.h"
#include "fgenintresultsfilevalue.h"

class FParameter;

/// A result file of the external program: its name, how its lines split into columns, and the
/// values to take from it. The stored text is a sample.
class FGenIntResultsFile : public FGenIntFile
{
    F_CLASS(FGenIntResultsFile, FGenIntFile)
public:
    explicit FGenIntResultsFile(std::string name = std::string());
    static std::shared_ptr<FGenIntResultsFile> create(const std::string &name);

    // How lines split into columns; numbers win over the other two, which add up.
    void setNumberSeparator(bool checked);
    bool getNumberSeparator() const { return mNumberSeparator; }
    void setSpacesAndTabsSeparator(bool checked);
    bool getSpacesAndTabsSeparator() const { return mSpacesAndTabsSeparator; }
    /// Fails, and changes nothing, if the expression would be too long when it is compiled.
    FStatus setRegExprSeparator(const QString &regularExpression);
    const QString &getRegExprSeparator() const { return mRegExpSeparator; }
    /// Also leaves number mode if the expression isn't empty.
    FStatus setRegExpSeparator(const std::string &regularExpression);
    /// True: white space on, number mode off. False does nothing.
    void setTabSeparator(bool checked);
    void setSpaceSeparator(bool checked) { setTabSeparator(checked); }

    void addValue(const QString &name, int line, int column, const QString &anchor,
                  const QString &occurrence, bool calcAverage,
                  const FExpr<FUnsigned> &numAverageRows);
    /// Moves a rule: the one of that name reads there from now on. One undo step, unlike the
    /// setters of the value under edit, which an editor calls while the user still types.
    FStatus changeValue(const QString &name, int line, int column, const QString &anchor,
                        GenIntAnchorOccurrence occurrence);
    /// Replaces the rules by the ones of a list in saved form. Fails, and changes nothing, if one
    /// is no rule.
    FStatus setValues(const FExpr<FObjectList> &values);
    const FExpr<FObjectList> &getValues() const { return mValues; }
    std::vector<std::shared_ptr<FGenIntResultsFileValue>> values() const;
    /// The first of that name, ignoring case.
    FExpr<FGenIntResultsFileValue> getValue(const QString &name) const;

    // The value under edit
    void setCurrentValue(const FExpr<FGenIntResultsFileValue> &value) { mCurrentValue = value; }
    const FExpr<FGenIntResultsFileValue> &getCurrentValue() const { return mCurrentValue; }
    QString getCurrentAnchor() const;
    GenIntAnchorOccurrence getCurrentOccurrence() const;
    int getCurLine() const;
    int getCurColumn() const;
    bool getCurCalcAverage() const;
    FExpr<FUnsigned> getCurNumAverageRows() const;
    void setCurrentAnchor(const QString &anchor);
    void setCurrentOccurrence(GenIntAnchorOccurrence occurrence);
    /// Renames it, with a number behind a name that is taken; returns the name given.
    QString setCurValueName(const QString &name);
    void deleteCurrentValue();

    /// A parameter that evaluates a value of the results of a computation; null if that fails.
    FExpr<FParameter> createParam(const QString &valueName, const QString &computationName,
                                  bool highlight) const;

    using FGenIntFile::init;
    void init(const std::shared_ptr<FGenIntResultsFile> &source);
    std::shared_ptr<FObject> clone() const override;
    void constructFObject() override;
    void visitState(FStateVisitor &state) override;

    static void initCmds();

private:
    template <class T>
    void assign(T &field, const T &value, const char *text);

    bool mNumberSeparator = true;
    bool mSpacesAndTabsSeparator = false;
    QString mRegExpSeparator = QLatin1String("");
    FExpr<FObjectList> mValues;
    FExpr<FGenIntResultsFileValue> mCurrentValue;
};
#endif
