// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/side_bar/content_model.h"

#include <QLocale>
#include <QStringList>
#include <algorithm>
#include <unordered_set>
#include <utility>

#include "shell/kit/failure_words.h"
#include "util/file_failures.h"
#include "util/file_system.h"

namespace vistels {

// A line below a vault. Lines with the same key are the same thing.
struct content_model::line {
    line_kind kind = line_kind::heading;
    content_item item;
    QString words;
    QString opens;  // of a pattern: its text

    std::string key() const {
        if (kind == line_kind::heading) return words.toStdString();
        if (kind == line_kind::pattern) return "pattern " + opens.toStdString();
        return std::to_string(static_cast<int>(item.kind)) + item.path;
    }
    bool operator==(const line&) const = default;
};

struct content_model::vault_node {
    quintptr id = 0;
    content_vault content;
    std::vector<line> lines;
};

namespace {

QString icon_of(item_kind kind) {
    switch (kind) {
        case item_kind::collection:
            return QStringLiteral("collection");
        case item_kind::timeline:
            return QStringLiteral("timeline");
        case item_kind::composer:
            return QStringLiteral("composer");
        case item_kind::markup:
            return QStringLiteral("code-window");
        case item_kind::table:
            return QStringLiteral("table");
        case item_kind::matrix:
            return QStringLiteral("matrix");
    }
    return {};
}

QString kind_count(item_kind kind, std::size_t count) {
    const QString number = QLocale::c().toString(static_cast<qulonglong>(count));
    const bool one = count == 1;
    switch (kind) {
        case item_kind::collection:
            return (one ? QObject::tr("%1 collection") : QObject::tr("%1 collections")).arg(number);
        case item_kind::timeline:
            return (one ? QObject::tr("%1 timeline") : QObject::tr("%1 timelines")).arg(number);
        case item_kind::composer:
            return (one ? QObject::tr("%1 composer") : QObject::tr("%1 composers")).arg(number);
        case item_kind::markup:
            return (one ? QObject::tr("%1 code window") : QObject::tr("%1 code windows")).arg(number);
        case item_kind::table:
            return (one ? QObject::tr("%1 clip table") : QObject::tr("%1 clip tables")).arg(number);
        case item_kind::matrix:
            return (one ? QObject::tr("%1 matrix") : QObject::tr("%1 matrices")).arg(number);
    }
    return {};
}

QString space_warning(const content_vault& vault) {
    if (!vault.is_limited || !vault.space) return {};
    return QObject::tr("Nearly full: %1 % free").arg(vault.space->free_percent(), 0, 'f', 0);
}

// Without the path, which there is no room for and which the tool tip tells.
QString short_problem(const failure& problem) {
    if (problem.is(file_is_missing_or_no_folder)) return QObject::tr("Is missing or is no folder.");
    if (problem.is(file_cannot_be_listed)) {
        return QObject::tr("Cannot be listed: %1.").arg(words_of(problem.cause()));
    }
    return words_of(problem, shown_paths::names);
}

QString vault_tip(const content_vault& vault) {
    QStringList parts{QString::fromStdString(vault.path)};
    if (vault.problem) {
        parts << words_of(vault.problem);
    } else {
        parts << content_summary(vault.counts);
    }
    if (vault.is_home) parts << QObject::tr("The home vault");
    if (vault.is_focus) parts << QObject::tr("The focus vault: new items are saved here");
    if (vault.space && !vault.problem) {
        const QString free =
            QObject::tr("%1 of %2 free")
                .arg(space_text(vault.space->free_bytes), space_text(vault.space->total_bytes));
        parts << (vault.is_limited ? QObject::tr("Nearly full: %1").arg(free) : free);
    }
    return parts.join(QLatin1Char('\n'));
}

QString vault_spoken(const content_vault& vault) {
    QStringList parts{QObject::tr("%1, vault").arg(QString::fromStdString(vault.name))};
    if (vault.is_home) parts << QObject::tr("home vault");
    if (vault.is_focus) parts << QObject::tr("focus vault");
    parts << (vault.problem ? words_of(vault.problem) : content_summary(vault.counts));
    if (const QString space = space_warning(vault); !space.isEmpty()) parts << space;
    return parts.join(QStringLiteral(", "));
}

}  // namespace

QString content_summary(const std::array<std::size_t, 6>& counts) {
    QStringList parts;
    for (const item_kind kind : group_order) {
        const auto count = counts[static_cast<std::size_t>(kind)];
        if (count > 0) parts << kind_count(kind, count);
    }
    return parts.isEmpty() ? QObject::tr("Nothing in it yet") : parts.join(QStringLiteral(", "));
}

QString space_text(double bytes) {
    constexpr double megabyte = 1e6;
    constexpr double gigabyte = 1e9;
    constexpr double terabyte = 1e12;
    if (bytes >= terabyte) return QObject::tr("%1 TB").arg(bytes / terabyte, 0, 'f', 1);
    if (bytes < gigabyte) return QObject::tr("%1 MB").arg(bytes / megabyte, 0, 'f', 0);
    return QObject::tr("%1 GB").arg(bytes / gigabyte, 0, 'f', bytes < 10 * gigabyte ? 1 : 0);
}

content_model::content_model(QObject* parent) : QAbstractItemModel(parent) {}
content_model::~content_model() = default;

void content_model::set_content(std::vector<content_vault> vaults) {
    content_ = std::move(vaults);
    refresh();
}

void content_model::set_patterns(std::vector<content_pattern> patterns) {
    if (patterns == patterns_) return;
    patterns_ = std::move(patterns);
    refresh();
}

void content_model::set_filter(const QString& text) {
    const QString wanted = text.trimmed();
    if (wanted == filter_) return;
    filter_ = wanted;
    refresh();
}

bool content_model::passes(const std::string& name) const {
    return filter_.isEmpty() || QString::fromStdString(name).contains(filter_, Qt::CaseInsensitive);
}

std::vector<content_model::line> content_model::lines_of(const content_vault& vault) const {
    std::vector<line> lines;
    const auto heading = [&](const QString& words) { lines.push_back({line_kind::heading, {}, words, {}}); };
    if (vault.problem) return lines;
    const bool has_patterns = vault.is_home && !patterns_.empty();
    if (vault.items.empty() && !has_patterns) heading(tr("Nothing in it yet"));
    const bool whole = filter_.isEmpty() || passes(vault.name);
    const content_item* before = nullptr;
    for (const auto& item : vault.items) {
        if (!whole && !passes(item.name)) continue;
        if (!before || before->kind != item.kind) heading(tr(group_heading(item.kind)));
        before = &item;
        lines.push_back(
            {line_kind::item, item, QString::fromStdString(item.name), QString::fromStdString(item.opens)});
    }
    bool is_headed = false;
    for (const auto& one : vault.is_home ? patterns_ : std::vector<content_pattern>()) {
        if (!whole && !passes(one.name)) continue;
        if (!std::exchange(is_headed, true)) heading(tr("Patterns"));
        lines.push_back(
            {line_kind::pattern, {}, QString::fromStdString(one.name), QString::fromStdString(one.pattern)});
    }
    return lines;
}

std::unique_ptr<content_model::vault_node> content_model::make_node(const content_vault& vault) {
    auto node = std::make_unique<vault_node>();
    node->id = ++last_id_;
    node->content = vault;
    node->lines = lines_of(vault);
    return node;
}

bool content_model::has_passing(const content_vault& vault) const {
    const auto named = [this](const auto& one) { return passes(one.name); };
    return passes(vault.name) || std::any_of(vault.items.begin(), vault.items.end(), named) ||
           (vault.is_home && std::any_of(patterns_.begin(), patterns_.end(), named));
}

void content_model::refresh() {
    std::vector<const content_vault*> wanted;
    for (const auto& vault : content_) {
        if (has_passing(vault)) wanted.push_back(&vault);
    }
    for (int row = static_cast<int>(vaults_.size()) - 1; row >= 0; --row) {
        const auto& path = vaults_[static_cast<std::size_t>(row)]->content.path;
        if (std::any_of(wanted.begin(), wanted.end(), [&](auto* one) { return one->path == path; })) continue;
        beginRemoveRows({}, row, row);
        vaults_.erase(vaults_.begin() + row);
        endRemoveRows();
    }
    for (std::size_t at = 0; at < wanted.size(); ++at) {
        const int row = static_cast<int>(at);
        const bool is_there = at < vaults_.size() && vaults_[at]->content.path == wanted[at]->path;
        if (!is_there) {
            // One that moved is taken out further down and put in here.
            const QModelIndex old = vault_index(wanted[at]->path);
            if (old.isValid()) {
                beginRemoveRows({}, old.row(), old.row());
                vaults_.erase(vaults_.begin() + old.row());
                endRemoveRows();
            }
            beginInsertRows({}, row, row);
            vaults_.insert(vaults_.begin() + row, make_node(*wanted[at]));
            endInsertRows();
            continue;
        }
        vault_node& node = *vaults_[at];
        node.content = *wanted[at];
        const QModelIndex place = createIndex(row, 0, quintptr{0});
        take_in_lines(node, place, lines_of(node.content));
        Q_EMIT dataChanged(place, place);
    }
}

void content_model::remove_gone_lines(vault_node& node, const QModelIndex& parent,
                                      const std::vector<line>& lines) {
    std::unordered_set<std::string> kept;
    for (const auto& one : lines) kept.insert(one.key());
    for (int last = static_cast<int>(node.lines.size()) - 1; last >= 0; --last) {
        int first = last + 1;
        while (first > 0 && !kept.contains(node.lines[static_cast<std::size_t>(first - 1)].key())) --first;
        if (first > last) continue;
        beginRemoveRows(parent, first, last);
        node.lines.erase(node.lines.begin() + first, node.lines.begin() + last + 1);
        endRemoveRows();
        last = first;
    }
}

void content_model::take_in_lines(vault_node& node, const QModelIndex& parent, std::vector<line> lines) {
    remove_gone_lines(node, parent, lines);
    std::unordered_set<std::string> shown;
    for (const auto& one : node.lines) shown.insert(one.key());
    int first_changed = -1;
    int last_changed = -1;
    for (std::size_t at = 0; at < lines.size();) {
        const int row = static_cast<int>(at);
        if (at < node.lines.size() && node.lines[at].key() == lines[at].key()) {
            if (node.lines[at] != lines[at]) {
                node.lines[at] = lines[at];
                if (first_changed < 0) first_changed = row;
                last_changed = row;
            }
            ++at;
            continue;
        }
        std::size_t end = at;
        while (end < lines.size() && !shown.contains(lines[end].key())) ++end;
        if (end == at) {
            // Another order: what follows is put in anew.
            beginRemoveRows(parent, row, static_cast<int>(node.lines.size()) - 1);
            node.lines.resize(at);
            endRemoveRows();
            end = lines.size();
        }
        beginInsertRows(parent, row, static_cast<int>(end) - 1);
        node.lines.insert(node.lines.begin() + row, lines.begin() + row,
                          lines.begin() + static_cast<std::ptrdiff_t>(end));
        endInsertRows();
        at = end;
    }
    if (first_changed < 0) return;
    Q_EMIT dataChanged(index(first_changed, 0, parent), index(last_changed, 0, parent));
}

void content_model::set_open(const std::string& folder, const QString& fact) {
    const QString wanted = QString::fromStdString(folder);
    if (wanted == open_folder_ && fact == open_fact_) return;
    const QModelIndex before = index_of(open_folder_.toStdString());
    open_folder_ = wanted;
    open_fact_ = fact;
    const QModelIndex now = index_of(folder);
    if (before.isValid() && before != now) Q_EMIT dataChanged(before, before);
    if (now.isValid()) Q_EMIT dataChanged(now, now);
}

QModelIndex content_model::index_of(const std::string& folder) const {
    if (folder.empty()) return {};
    for (std::size_t vault = 0; vault < vaults_.size(); ++vault) {
        const auto& lines = vaults_[vault]->lines;
        const auto found = std::find_if(lines.begin(), lines.end(), [&](const line& one) {
            return one.kind == line_kind::item && one.item.opens == folder;
        });
        if (found != lines.end()) {
            return createIndex(static_cast<int>(found - lines.begin()), 0, vaults_[vault]->id);
        }
    }
    return {};
}

QModelIndex content_model::vault_index(const std::string& path) const {
    for (std::size_t row = 0; row < vaults_.size(); ++row) {
        if (vaults_[row]->content.path == path) return createIndex(static_cast<int>(row), 0, quintptr{0});
    }
    return {};
}

const content_vault* content_model::vault_of(const QModelIndex& index) const {
    if (!index.isValid()) return nullptr;
    const int row = index.internalId() == 0 ? index.row() : row_of(index.internalId());
    return &vaults_[static_cast<std::size_t>(row)]->content;
}

std::size_t content_model::item_count() const {
    std::size_t count = 0;
    for (const auto& vault : content_) count += vault.items.size();
    return count;
}

int content_model::row_of(quintptr id) const {
    const auto found =
        std::find_if(vaults_.begin(), vaults_.end(), [&](const auto& node) { return node->id == id; });
    return static_cast<int>(found - vaults_.begin());
}

QModelIndex content_model::index(int row, int column, const QModelIndex& parent) const {
    if (row < 0 || column != 0 || row >= rowCount(parent)) return {};
    if (!parent.isValid()) return createIndex(row, 0, quintptr{0});
    return createIndex(row, 0, vaults_[static_cast<std::size_t>(parent.row())]->id);
}

QModelIndex content_model::parent(const QModelIndex& child) const {
    if (!child.isValid() || child.internalId() == 0) return {};
    return createIndex(row_of(child.internalId()), 0, quintptr{0});
}

int content_model::rowCount(const QModelIndex& parent) const {
    if (!parent.isValid()) return static_cast<int>(vaults_.size());
    if (parent.internalId() != 0) return 0;
    return static_cast<int>(vaults_[static_cast<std::size_t>(parent.row())]->lines.size());
}

int content_model::columnCount(const QModelIndex&) const {
    return 1;
}

Qt::ItemFlags content_model::flags(const QModelIndex& index) const {
    if (!index.isValid()) return {};
    const bool is_heading = index.data(kind_role).toInt() == static_cast<int>(line_kind::heading);
    // Neither pointer nor keys stop at a heading.
    return is_heading ? Qt::NoItemFlags : Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

QVariant content_model::data(const QModelIndex& index, int asked) const {
    if (!index.isValid()) return {};
    if (index.internalId() == 0) return vault_data(*vaults_[static_cast<std::size_t>(index.row())], asked);
    const vault_node& node = *vaults_[static_cast<std::size_t>(row_of(index.internalId()))];
    return line_data(node.lines[static_cast<std::size_t>(index.row())], asked);
}

QVariant content_model::vault_data(const vault_node& node, int asked) const {
    const content_vault& vault = node.content;
    switch (asked) {
        case Qt::DisplayRole:
            return QString::fromStdString(vault.name);
        case Qt::ToolTipRole:
            return vault_tip(vault);
        case Qt::AccessibleTextRole:
            return vault_spoken(vault);
        case kind_role:
            return static_cast<int>(line_kind::vault);
        case icon_role:
            return QStringLiteral("vault");
        case folder_role:
        case path_role:
            return QString::fromStdString(vault.path);
        case summary_role:
            return vault.problem ? QString() : content_summary(vault.counts);
        case space_role:
            return space_warning(vault);
        case problem_role:
            return short_problem(vault.problem);
        case home_role:
            return vault.is_home;
        case focus_role:
            return vault.is_focus;
        default:
            return {};
    }
}

QVariant content_model::line_data(const line& one, int asked) const {
    if (asked == Qt::DisplayRole) return one.words;
    if (asked == kind_role) return static_cast<int>(one.kind);
    if (one.kind == line_kind::heading) return {};
    if (one.kind == line_kind::pattern) {
        if (asked == Qt::ToolTipRole || asked == pattern_role) return one.opens;
        if (asked == Qt::AccessibleTextRole) return tr("%1, filter").arg(one.words);
        return asked == icon_role ? QStringLiteral("filter") : QVariant();
    }
    const bool is_open = !open_folder_.isEmpty() && one.opens == open_folder_ &&
                         (one.item.kind == item_kind::collection || one.item.path == one.item.opens);
    switch (asked) {
        case Qt::ToolTipRole:
        case path_role:
            return QString::fromStdString(one.item.path);
        case Qt::AccessibleTextRole:
            return tr("%1, %2").arg(
                one.words, QLatin1String(item_kinds()[static_cast<std::size_t>(one.item.kind)].type));
        case icon_role:
            return icon_of(one.item.kind);
        case folder_role:
            return one.opens;
        case item_kind_role:
            return static_cast<int>(one.item.kind);
        case count_role:
            return one.item.count < 0 ? QString() : QLocale::c().toString(one.item.count);
        case fact_role:
            return is_open ? open_fact_ : QString();
        case open_role:
            return is_open;
        default:
            return {};
    }
}

}  // namespace vistels
