#include "window/model/PathsModel.h"

#include <algorithm>

#include "casetable/explaining/Explain.h"
#include "casetable/explaining/ExplainTemplate.h"
#include "casetable/system/Printable.h"
#include "casetable/templates/Matcher.h"
#include "window/model/Text.h"

namespace casetable {

namespace {

// As many rows as can be seen at once, and some more.
const int mostReads = 500;

// Printable lines, without the line feed at their end.
QString shownLines(const std::string& lines)
{
    QString text = QString::fromStdString(lines);
    text.chop(1);
    return text;
}

} // namespace

PathsModel::PathsModel(const Session& session) : session_(session), reads_(mostReads)
{
    connect(&session, &Session::filesChanged, this, &PathsModel::takeFiles);
    connect(&session, &Session::shownChanged, this, &PathsModel::takeShown);
    connect(&session, &Session::setupChanged, this, &PathsModel::takeReading);
    connect(&session, &Session::matchingChanged, this, [this] {
        if (rows_ > 0)
            Q_EMIT dataChanged(createIndex(0, 0), createIndex(rows_ - 1, ColumnCount - 1));
    });
    takeReading();
    takeShown();
}

int PathsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : rows_;
}

int PathsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant PathsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rows_)
        return {};
    const int row = index.row();
    if (role == Qt::TextAlignmentRole && index.column() == CaseColumn)
        return int(Qt::AlignRight | Qt::AlignVCenter);
    if (role == Qt::DisplayRole && index.column() == PathColumn)
        return shown(path(row));
    if (role == Qt::DisplayRole) {
        const std::optional<std::size_t> number = caseOf(row);
        return number ? QString::number(*number) : QString();
    }
    // The marks in it stand below bytes of the path.
    if (role == Qt::ToolTipRole && reader_)
        return "<pre>" + shownLines(explanation(row)).toHtmlEscaped() + "</pre>";
    if (role == Qt::AccessibleDescriptionRole && reader_)
        return shownLines(explanation(row));
    return {};
}

QVariant PathsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal)
        return {};
    return section == CaseColumn ? tr("Case") : tr("Path");
}

std::size_t PathsModel::fileOf(int row) const
{
    const auto place = static_cast<std::size_t>(row);
    const std::vector<std::uint32_t>* const shown = session_.shownFiles();
    return shown != nullptr ? (*shown)[place] : place;
}

int PathsModel::rowOf(std::size_t file) const
{
    const std::vector<std::uint32_t>* const shown = session_.shownFiles();
    if (shown == nullptr)
        return static_cast<int>(file);
    const auto place = std::lower_bound(shown->begin(), shown->end(), file);
    return place != shown->end() && *place == file ? static_cast<int>(place - shown->begin()) : -1;
}

std::string PathsModel::path(int row) const
{
    return std::string(session_.files().path(fileOf(row)));
}

const PathRead* PathsModel::read(int row) const
{
    if (!reader_)
        return nullptr;
    const std::size_t file = fileOf(row);
    if (const PathRead* const known = reads_.object(file))
        return known;
    reads_.insert(file, new PathRead(reader_->read(path(row))));
    return reads_.object(file);
}

std::string PathsModel::explanation(int row) const
{
    if (!reading_)
        return "";
    try {
        return reading_->visit([&](const auto& by) { return explain(path(row), by, false).text; });
    } catch (const MatchError& failure) {
        return printable(path(row)) + "\nnot matched: " + printable(failure.reason) + '\n';
    }
}

std::optional<std::size_t> PathsModel::caseOf(int row) const
{
    const auto& matching = session_.matching();
    const std::size_t file = fileOf(row);
    if (!matching || session_.isMatching() || file >= matching->caseOf.size() ||
        matching->caseOf[file] == Matching::none)
        return std::nullopt;
    return matching->caseOf[file];
}

std::optional<std::size_t> PathsModel::auxOf(int row) const
{
    const auto& matching = session_.matching();
    const std::size_t file = fileOf(row);
    if (!matching || session_.isMatching() || file >= matching->auxOf.size() ||
        matching->auxOf[file] == Matching::none)
        return std::nullopt;
    return matching->auxOf[file];
}

void PathsModel::takeFiles()
{
    const int count = static_cast<int>(session_.files().count());
    reads_.clear();
    if (session_.shownFiles() != nullptr)
        return takeShown();
    if (count <= rows_)
        return takeShown();
    beginInsertRows({}, rows_, count - 1);
    rows_ = count;
    endInsertRows();
}

// The rows are those of before at the begin; views keep their place.
void PathsModel::takeShown()
{
    const std::vector<std::uint32_t>* const shown = session_.shownFiles();
    beginResetModel();
    reads_.clear();
    rows_ = static_cast<int>(shown != nullptr ? shown->size() : session_.files().count());
    endResetModel();
}

void PathsModel::takeReading()
{
    if (reading_ == session_.reading())
        return;
    reading_ = session_.reading();
    reader_ = reading_ ? std::make_unique<PathReader>(reading_) : nullptr;
    reads_.clear();
    if (rows_ > 0)
        Q_EMIT dataChanged(createIndex(0, 0), createIndex(rows_ - 1, ColumnCount - 1));
}

} // namespace casetable
