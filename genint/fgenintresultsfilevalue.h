// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTRESULTSFILEVALUE_H
#define FGENINTRESULTSFILEVALUE_H
#include "fbasictype.h"
#include "fcmd.h"
#include "fscripttype.h"

enum class GenIntAnchorOccurrence : unsigned { First = 0, Last = 1 };
F_ENUM(GenIntAnchorOccurrence)

/// One rule of a result template: the name of a value and where it stands in a result file.
class FGenIntResultsFileValue : public FBasicType
{
    F_CLASS(FGenIntResultsFileValue, FBasicType)
public:
    FGenIntResultsFileValue();
    FGenIntResultsFileValue(std::string name, int line, int column, std::string anchor,
                            const std::string &occurrence, const std::shared_ptr<FObject> &type,
                            std::string importType, bool calcAverage,
                            const FExpr<FUnsigned> &numAverageRows);
    FGenIntResultsFileValue(const FGenIntResultsFileValue &) = default;

    void setName(const std::string &name) { mName = name; }
    /// Takes the class of \p type; null leaves the value without one.
    void setType(const std::shared_ptr<FObject> &type);
    void setTypeFromString(const std::string &className);
    /// Tells what keeps an element of a list of rules from being the list form of a rule: success
    /// if nothing does. An unknown word for the occurrence is First, as in old
    /// projects.
    static FStatus checkList(const FExprBase &element);
    /// Reads the list form back; fewer than 7 elements change nothing.
    void setPrimitiveValue(const FExprBase &expr) override;
    /// The list form, quotes in name and anchor as they are.
    std::string toString() const override { return listText(false); }
    /// The same where it reads back to the same rule, else with the texts escaped.
    std::string toSavedString() const override;
    std::shared_ptr<FObject> clone() const override;
    void constructFObject() override;
    void visitState(FStateVisitor &state) override;
    /// Number of last rows of an average, 0 without one.
    unsigned averageRows() const;

    std::string mName;
    int mLine = 0;
    int mColumn = 0;
    std::string mAnchor;
    GenIntAnchorOccurrence mOccurrence = GenIntAnchorOccurrence::Last;
    FExpr<FObject> mType;
    std::string mImportType;
    bool mCalcAverage = false;
    FExpr<FUnsigned> mNumAverageRows;

private:
    std::string listText(bool escaped) const;
};
#endif
