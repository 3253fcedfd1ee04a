// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/event_messages.h"

#include <QDesktopServices>
#include <QObject>
#include <QStringList>
#include <QUrl>
#include <algorithm>

#include "app/start/start_failures.h"
#include "shell/kit/failure_words.h"
#include "util/file_system.h"

namespace vistels {

namespace {

// So many files are named in one message; the rest are counted.
constexpr std::size_t most_named = 4;

QString quoted(const std::string& name) {
    return QStringLiteral("“%1”").arg(QString::fromStdString(name));
}

QString unclean_end_headline() {
    return QObject::tr("Vistels was not quit properly the last time");
}

user_message::choice continue_choice() {
    return {QObject::tr("Continue"), {}};
}

user_message::choice show_files_choice(const std::string& path) {
    return {QObject::tr("Show Files"), [path] { show_in_files(path); }, true};
}

}  // namespace

void show_in_files(const std::string& path) {
    const std::string folder = is_folder(path) ? path : path_folder(path);
    QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(folder)));
}

std::vector<user_message> messages_of_start(const start_up_report& report) {
    std::vector<user_message> all;
    if (!report.recovered.empty()) {
        user_message told;
        told.headline =
            report.ended_well_before ? QObject::tr("Files were put back whole") : unclean_end_headline();
        QStringList named;
        for (const auto& path : report.recovered) {
            if (named.size() < static_cast<int>(most_named)) named << quoted(path);
        }
        told.text = report.recovered.size() == 1
                        ? QObject::tr("1 file was put back whole: %1.").arg(named.first())
                        : QObject::tr("%1 files were put back whole: %2.")
                              .arg(report.recovered.size())
                              .arg(named.join(QStringLiteral(", ")));
        if (report.recovered.size() > most_named) {
            told.text.chop(1);
            told.text += QObject::tr(" and %1 more.").arg(report.recovered.size() - most_named);
        }
        told.choices = {continue_choice(), show_files_choice(report.recovered.front())};
        all.push_back(std::move(told));
    }
    if (!report.ended_well_before && report.recovered.empty()) {
        all.push_back(
            {user_message::tone::warning,
             unclean_end_headline(),
             QObject::tr("No file was damaged. Changes of a timeline that were not saved are brought "
                         "back when it is opened."),
             {},
             {}});
    }
    for (const auto& message : report.messages) {
        // Paragraphs come as the build check writes them.
        QString text = words_of(message);
        text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
        user_message told{user_message::tone::warning, QObject::tr("From the start"), text, {}, {}};
        if (message.is(build_is_older)) told.key = QString::fromLatin1(start_up_message_id);
        all.push_back(std::move(told));
    }
    return all;
}

std::vector<user_message> messages_of_opening(const opening_report& report) {
    std::vector<user_message> all;
    if (report.recovered_edits > 0) {
        user_message told;
        told.headline = QObject::tr("Vistels was closed before it had saved");
        told.text = report.recovered_edits == 1
                        ? QObject::tr("1 change was put back into the timeline of “%1”.").arg(report.event)
                        : QObject::tr("All %1 changes since then were put back into the timeline of “%2”.")
                              .arg(report.recovered_edits)
                              .arg(report.event);
        if (!report.finished.isEmpty()) {
            told.detail = QObject::tr("Clips that were running were ended at the last known time: %1.")
                              .arg(report.finished.join(QStringLiteral(", ")));
        }
        told.choices = {continue_choice(), show_files_choice(report.folder)};
        all.push_back(std::move(told));
    }
    for (const auto& message : report.messages) {
        const auto conflict = std::find_if(report.conflicts.begin(), report.conflicts.end(),
                                           [&](const file_conflict& one) { return one.told == message; });
        if (conflict != report.conflicts.end()) {
            all.push_back(conflict_message(report.event, *conflict));
            continue;
        }
        user_message told;
        told.headline = QObject::tr("Something in “%1” needs a look").arg(report.event);
        told.text = words_of(message);
        told.choices = {continue_choice(), show_files_choice(report.folder)};
        all.push_back(std::move(told));
    }
    return all;
}

user_message conflict_message(const QString& event, const file_conflict& conflict) {
    user_message told;
    told.headline = QObject::tr("“%1” was changed by another program too").arg(event);
    told.text = words_of(conflict.told);
    told.choices = {continue_choice(), show_files_choice(conflict.kept_as)};
    told.key = QStringLiteral("conflict ") + QString::fromStdString(conflict.kept_as);
    return told;
}

user_message shortage_message(const QString& event, const failure& alert) {
    // Paragraphs are parted by two carriage returns.
    QString text = words_of(alert);
    text.replace(QLatin1String("\r\r"), QLatin1String("\n"));
    return {
        user_message::tone::warning, QObject::tr("A movie of “%1” is not whole").arg(event), text, {}, {}};
}

user_message read_only_message(const QString& event, const failure& reason) {
    user_message told;
    told.headline = QObject::tr("“%1” can be looked at but not changed").arg(event);
    told.text = words_of(reason);
    told.key = QLatin1String(read_only_key);
    return told;
}

user_message save_failed_message(const QString& event, const std::string& folder, const QString& reason) {
    user_message told;
    told.kind = user_message::tone::error;
    told.headline = QObject::tr("“%1” is not saved").arg(event);
    told.text = reason;
    told.detail = QObject::tr("What you code is kept on record; saving is tried again by itself.");
    told.choices = {continue_choice(), show_files_choice(folder)};
    told.key = QLatin1String(save_failed_key);
    return told;
}

user_message gone_message(const std::string& folder) {
    user_message told;
    told.headline = QObject::tr("%1 is no longer there").arg(quoted(path_name(folder)));
    told.text = QObject::tr(
                    "It was open when Vistels was last closed, in %1. Its vault may be on a volume that "
                    "is not connected, or the event was moved or renamed.")
                    .arg(quoted(path_folder(folder)));
    return told;
}

user_message unknown_kind_message(item_kind kind, const QString& name, const std::string& folder) {
    const auto words = [kind] {
        switch (kind) {
            case item_kind::composer:
                return QObject::tr("Composers can't be opened yet");
            case item_kind::table:
                return QObject::tr("Clip tables can't be opened yet");
            case item_kind::matrix:
                return QObject::tr("Matrices can't be opened yet");
            case item_kind::markup:
                return QObject::tr("Code windows open with their collection or timeline");
            case item_kind::collection:
            case item_kind::timeline:
                break;
        }
        return QObject::tr("This can't be opened yet");
    };
    user_message told;
    told.headline = words();
    told.text = QObject::tr("“%1” is kept as it is. Its files are shown in the file manager.").arg(name);
    told.choices = {continue_choice(), show_files_choice(folder)};
    return told;
}

user_message refused_press_message(const QString& button, const QString& event) {
    user_message told;
    told.kind = user_message::tone::error;
    told.headline = QObject::tr("“%1” was not coded").arg(button);
    told.text =
        QObject::tr(
            "The timeline of “%1” can only be read here. “Try Again” in its header opens it for changes "
            "once the other program has closed it.")
            .arg(event);
    told.key = QLatin1String(refused_press_key);
    told.comes_first = true;
    return told;
}

user_message pressing_message(const QString& event, std::function<void()> stop) {
    user_message told;
    told.headline = QObject::tr("Buttons are being pressed automatically");
    told.text =
        QObject::tr("What they make goes into the timeline of “%1”, and can be taken back.").arg(event);
    told.choices = {{QObject::tr("Stop"), std::move(stop)}};
    told.key = QLatin1String(pressing_key);
    told.comes_first = true;
    return told;
}

}  // namespace vistels
