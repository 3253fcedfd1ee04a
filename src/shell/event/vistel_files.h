// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QStringList>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "app/event/collection_changes.h"
#include "app/settings/places.h"
#include "shell/event/job_groups.h"
#include "util/job.h"
#include "util/job_list.h"
#include "util/result.h"
#include "util/signal.h"
#include "video/video_coll_Files.h"

class QWidget;

namespace vistels {

class event_session;
class open_event;

// What is done with the files of the open event's vistels: adding, duplicating, deinterlacing, copying and
// closing them. Files are brought, copied and moved by jobs; what they bring is put into the collection when
// they end, or taken away again when the collection has no use for it any more. Main thread.
class vistel_files : public QObject {
    Q_OBJECT
  public:
    // All must outlive this. `window` is the dialogs' parent.
    vistel_files(QWidget& window, event_session& session, home_places places, job_groups jobs);
    ~vistel_files() override;

    // Chooses movies, then how to add them; with a vistel they are appended to it.
    void ask_movies(const std::string& vistel);
    // `vistel` is the one that they were dropped on; empty: none. More than one way to add them is asked for.
    void add(const QStringList& movies, const std::string& vistel);
    void add_as(const QStringList& movies, const std::string& vistel, movies_as how);
    // For the first movie part whose file is not in its place: the movie that the user shows takes it.
    void ask_missing_movie(const std::string& vistel);
    void bring_missing_movie(const std::string& vistel, const QString& movie);
    void ask_name(const std::string& vistel);
    void remove(const std::string& vistel);
    void duplicate(const std::string& vistel);
    void deinterlace(const std::string& vistel);
    // To a place in the order of the vistels, from 0.
    void move(const std::string& vistel, std::size_t place);
    // Into `folder`; empty: the desktop.
    void copy_movie(const std::string& vistel, const std::string& folder = {});
    // Asks first; then removes the vistel and moves its data to the trash.
    void close_for_good(const std::string& vistel);
    void ask_overlay(const std::string& vistel);
    void add_overlay(const std::string& vistel, const QString& picture);
    void remove_overlay(const std::string& vistel);
    // A change as one undo step, on record and saved. A refused one is told, and so is one that could not be
    // saved; whether it was made, saved or not.
    bool make(const collection_change& change);

  private:
    // The vistels stay in their ready layout.
    bool make_and_place(collection_change change, const std::string& vistel);
    void close_now(const std::string& vistel);
    // Undo may bring back a vistel whose data is in the trash.
    void bring_back_closed();
    void play_again(const std::string& vistel);
    void append(const std::vector<std::string>& items, const std::string& vistel);
    void add_vistels(const std::vector<std::string>& items, movies_as how);
    void change_vistels(const collection_change& change, const std::string& vistel);
    new_vistels made_with() const;
    std::shared_ptr<single_Vistel_CTR> find(const std::string& vistel) const;
    std::set<std::string> vistels_now() const;
    open_event* event() const;
    // Files that are brought for the event.
    struct bringing {
        QString title;
        QString words;
        QString failed;      // the headline when it fails
        std::string what;    // the same is not brought twice at once
        std::string folder;  // where they are brought
        std::string vistel;  // that must still be there; empty: none
        std::function<result<void>(job&)> bring;
        std::function<bool()> put_in;     // into the collection; false: it does not fit any more
        std::function<void()> take_away;  // what was brought
    };
    void run(bringing order);
    // Tells when a job changes files where these are.
    bool is_busy(const std::string& folder, const QString& headline);
    std::shared_ptr<const single_Vistel_CTR> copy_of(const std::string& vistel) const;
    void move_data_away(const std::string& vistel, const QString& name, const std::string& folder);
    void bring_back(const std::string& vistel, const std::string& folder);
    void tell_failure(const QString& headline, const failure& reason);
    void tell_failure(const QString& headline, const QString& text);
    void tell_good(const QString& headline, const QString& text);

    QWidget& window_;
    event_session& session_;
    const home_places places_;
    const job_groups jobs_;
    job_group moving_;             // of data to the trash and back; nobody is asked about these
    std::set<std::string> known_;  // the vistels that were there after the last change
    connection made_;
};

}  // namespace vistels
