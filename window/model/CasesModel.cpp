#include "window/model/CasesModel.h"

#include "window/model/Text.h"

namespace casetable {

namespace {

// As many as can be seen at once, and some more.
const int mostRows = 500;

} // namespace

CasesModel::CasesModel(const Session& session) : session_(session), rows_(mostRows)
{
    connect(&session, &Session::matchingChanged, this, &CasesModel::take);
    take();
}

void CasesModel::take()
{
    if (session_.isMatching())
        return;
    beginResetModel();
    matching_ = session_.matching();
    columns_.clear();
    header_.clear();
    rows_.clear();
    if (matching_ && matching_->import) {
        const CaseTable& table = matching_->import->table();
        columns_ = caseColumns(table.patterns, table.tags);
        header_ = uniqueHeader(columns_);
    }
    endResetModel();
}

int CasesModel::rowCount(const QModelIndex& parent) const
{
    if (parent.isValid() || !matching_ || !matching_->import)
        return 0;
    return static_cast<int>(matching_->import->table().caseCount());
}

int CasesModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

std::string CasesModel::cell(int row, int column) const
{
    const CaseTable& table = matching_->import->table();
    const std::size_t index = caseOf(row);
    const auto at = static_cast<std::size_t>(column);
    if (columns_[at].isValue())
        return table.cell(index, at - 1);
    if (columns_[at].kind == Column::Kind::Count)
        return std::to_string(at == 0 ? index : table.fileCounts[index]);
    // The files of a case under a tag may be many.
    if (rows_.object(index) == nullptr)
        rows_.insert(index, new std::vector<std::string>(caseReport(table).row(index).cells));
    return (*rows_.object(index))[at];
}

QVariant CasesModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const Column& column = columns_[static_cast<std::size_t>(index.column())];
    if (role == Qt::DisplayRole)
        return shown(cell(index.row(), index.column()));
    if (role == Qt::TextAlignmentRole)
        return int((column.isNumber() ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    return {};
}

QVariant CasesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    const auto at = static_cast<std::size_t>(section);
    if (orientation != Qt::Horizontal || at >= columns_.size())
        return {};
    if (role == Qt::DisplayRole)
        return shown(header_[at]);
    if (role == Qt::TextAlignmentRole)
        return int((columns_[at].isNumber() ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    return {};
}

std::size_t CasesModel::caseOf(int row) const
{
    const auto* const order = session_.caseOrder();
    const auto at = static_cast<std::size_t>(row);
    return order != nullptr && at < order->cases.size() ? order->cases[at] : at;
}

int CasesModel::rowOf(std::size_t caseIndex) const
{
    const auto* const order = session_.caseOrder();
    return static_cast<int>(
        order != nullptr && caseIndex < order->rows.size() ? order->rows[caseIndex] : caseIndex);
}

} // namespace casetable
