#ifndef WINDOW_VIEW_CASESVIEW_H
#define WINDOW_VIEW_CASESVIEW_H

#include <cstdint>
#include <vector>

#include <QTableView>

#include "window/model/CasesModel.h"

namespace casetable {

/// The table of cases. A click at the head of a column sorts by it, the next one downwards, and
/// the third not at all.
class CasesView : public QTableView {
    Q_OBJECT

public:
    /// Both must outlive it.
    CasesView(Session& session, CasesModel& model);

    /// The cases in the selected rows, in ascending order; none where all are.
    std::vector<std::uint32_t> selectedCases() const;

    /// Selects cases without telling so.
    void follow(const std::vector<std::uint32_t>& cases);

    /// The cases whose files are shown alone, or all, in the order of the rows.
    std::vector<std::uint32_t> casesToCopy() const;

Q_SIGNALS:
    /// The user selected other cases.
    void casesChosen();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void selectionChanged(const QItemSelection& now, const QItemSelection& before) override;

private:
    class Header;

    void sortBy(int section);
    void fitColumns();
    void keepChosen();

    Session& session_;
    CasesModel& model_;
    bool isFollowing_ = false;
    std::vector<QString> header_; // For which the widths are.
};

} // namespace casetable

#endif
