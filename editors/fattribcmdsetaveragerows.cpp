// SPDX-License-Identifier: Apache-2.0
#include "fattribcmdsetaveragerows.h"

#include "fbasictype.h"
#include "fgenintresultsfileeditor.h"
#include "fupdates.h"

F_CLASS_IMPL(FAttribCmdSetAverageRows)

namespace {
std::shared_ptr<const FCommandInfo> averageRowsInfo()
{
    static const std::shared_ptr<const FCommandInfo> info = [] {
        auto made = std::make_shared<FCommandInfo>();
        made->kind = FCommandKind::Attribute;
        made->receiver = &FGenIntResultsFile::staticClass();
        made->name = "setAverageRows";
        made->returns = "none";
        FArgInfo rows;
        rows.name = "Rows";
        rows.type = "FUnsigned";
        rows.klass = &FUnsigned::staticClass();
        made->args = {rows};
        made->call = [](FObject *, const std::vector<FExprBase> &) { return FResult(); };
        made->saved = false;
        return made;
    }();
    return info;
}
} // namespace

FAttribCmdSetAverageRows::FAttribCmdSetAverageRows(FGenIntResultsFileEditor *editor)
    : FAttribCmd(mInitPrototype ? nullptr : averageRowsInfo())
    , mEditor(editor)
{
}

FAttribCmdSetAverageRows::~FAttribCmdSetAverageRows() = default;

FExprBase FAttribCmdSetAverageRows::getCurrentValue(bool *) const
{
    const auto file = mEditor ? mEditor->resultsFile() : nullptr;
    if (!file)
        return FExprBase(f_make_shared<FUnsigned>(0U));
    const FExpr<FUnsigned> rows = file->getCurNumAverageRows();
    return rows ? FExprBase(rows) : FExprBase();
}

void FAttribCmdSetAverageRows::doUpdate() const
{
    const FImmediateUpdateBlocker later;
    const FExprBase rows = getArgument(0);
    if (rows && mEditor)
        mEditor->averageChanged(FExpr<FUnsigned>(rows));
    if (!rows)
        const_cast<FAttribCmdSetAverageRows *>(this)->setResult(FExprBase());
    setUpToDate();
}

FReason FAttribCmdSetAverageRows::take(const FExprBase &rows)
{
    FExprBase given = rows;
    if (rows && !rows.isExpression() && !rows.ptr<FUnsigned>()) {
        long long number = -1;
        if (!FConvert::toInt(rows, &number) || number < 0)
            return FReason::unexpected("a number of rows", rows.toString());
        given = FExprBase(FConvert::convert(rows, FUnsigned::mpNull));
    }
    setArguments({given});
    doUpdate();
    return {};
}
