// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractItemModel>
#include <QString>
#include <array>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "app/vaults/content_list.h"

namespace vistels {

// The lines of the side bar's list: the vaults, and below each the headings and items of what it holds; below
// the home vault the filters that have a name, too. New
// content is taken in line by line, so that what is selected, folded and scrolled to stays. Main thread.
class content_model final : public QAbstractItemModel {
    Q_OBJECT
  public:
    enum class line_kind { vault, heading, item, pattern };
    enum role {
        kind_role = Qt::UserRole + 1,  // line_kind as int
        icon_role,                     // name of the icon
        folder_role,                   // of a vault: its path; of an item: what it opens, may be empty
        path_role,                     // the folder itself
        item_kind_role,                // of an item, as int
        count_role,                    // clips, as text; may be empty
        fact_role,                     // of the open event; may be empty
        summary_role,                  // of a vault: "12 collections, 3 timelines"
        space_role,                    // of a vault: that it is nearly full, else empty
        problem_role,                  // of a vault: why it cannot be listed
        home_role,
        focus_role,
        open_role,     // this item is open in the window
        pattern_role,  // of a pattern: its text
    };

    explicit content_model(QObject* parent = nullptr);
    ~content_model() override;

    void set_content(std::vector<content_vault> vaults);
    const std::vector<content_vault>& content() const { return content_; }
    void set_patterns(std::vector<content_pattern> patterns);
    // Lists only items, or whole vaults, whose name holds the text; empty: all.
    void set_filter(const QString& text);
    const QString& filter() const { return filter_; }
    // The item that is open, by what it opens, and what is said about it in a second line.
    void set_open(const std::string& folder, const QString& fact);

    // The first item that opens the folder; invalid when none is listed.
    QModelIndex index_of(const std::string& folder) const;
    QModelIndex vault_index(const std::string& path) const;
    // The vault that the line belongs to; null when there is none.
    const content_vault* vault_of(const QModelIndex& index) const;
    // Of all vaults, whatever the filter.
    std::size_t item_count() const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int asked) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

  private:
    struct line;
    struct vault_node;

    void refresh();
    std::unique_ptr<vault_node> make_node(const content_vault& vault);
    void take_in_lines(vault_node& node, const QModelIndex& parent, std::vector<line> lines);
    void remove_gone_lines(vault_node& node, const QModelIndex& parent, const std::vector<line>& lines);
    std::vector<line> lines_of(const content_vault& vault) const;
    bool has_passing(const content_vault& vault) const;
    bool passes(const std::string& name) const;
    int row_of(quintptr id) const;
    QVariant vault_data(const vault_node& node, int asked) const;
    QVariant line_data(const line& one, int asked) const;

    std::vector<content_vault> content_;
    std::vector<content_pattern> patterns_;
    std::vector<std::unique_ptr<vault_node>> vaults_;
    quintptr last_id_ = 0;
    QString filter_;
    QString open_folder_;
    QString open_fact_;
};

// "12 collections, 14 timelines"; "Nothing in it yet" for none. `counts` in the order of item_kinds().
QString content_summary(const std::array<std::size_t, 6>& counts);
// "212 GB", with one decimal below 10.
QString space_text(double bytes);

}  // namespace vistels
