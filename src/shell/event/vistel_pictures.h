// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QSize>
#include <QTimer>
#include <cstddef>
#include <map>
#include <memory>
#include <string>

#include "media/picture.h"
#include "util/serial_queue.h"
#include "video/playback_tally.h"

class QImage;

namespace vistels {

class collection_pane;
class open_event;
class picture_wishes;
class single_Vistel_CTR;

// What is drawn on a vistel: its number when numbers are shown, its name with it when that is wanted, else
// the name. A name that begins with the number is not given it twice.
QString vistel_chip_words(const single_Vistel_CTR& vistel, std::size_t place, bool shows_number,
                          bool shows_name_with_number);

// Brings the pictures of an event's playback to a collection's view, and what the view wants of them to the
// event's wishes. Main thread.
class vistel_pictures : public QObject {
    Q_OBJECT
  public:
    // The pane must outlive this object.
    explicit vistel_pictures(collection_pane& pane);

    // Null: none. Event and wishes must outlive their use here.
    void set_event(open_event* event, picture_wishes* wishes);
    // The vistels as they are laid out, named and heard.
    void show_vistels();
    // Whether a vistel's name is drawn behind its number.
    void set_shows_names(bool shows);
    // Whether each chip says how its vistel fares in playback, counted from now on, and anew when one comes
    // or goes.
    void set_shows_health(bool shows);
    // What playback shows by now.
    void show_pictures();

    // Every vistel shows a picture, or says why it has none.
    bool are_complete() const;
    // The number of the frame that the enlarged vistel, or the first, shows, counted from its beginning; -1
    // when it shows none.
    long long frame_number() const;

  private:
    struct shown {
        picture_pointer picture;
        double aspect = 0;    // 0: not known yet
        QSize asked;          // the size that playback was told
        std::string overlay;  // the path of the picture over it
        enum class reading { none, asked, read } overlay_reading = reading::none;
        bool is_new = false;  // it came while the event was open, and had no picture yet
        bool in_sight = true;
    };

    void tell_sizes();
    // Pictures of what is out of sight are not wanted.
    void tell_sight();
    void show_picture(const std::string& vistel, shown& one);
    void show_overlay(const single_Vistel_CTR& vistel, shown& one);
    void take_overlay(const std::string& vistel, const std::string& path, const QImage& picture);
    QString fact() const;
    void show_health();
    // When there is a picture again, on the collection's clock; infinite: never.
    double gap_end(const std::string& vistel) const;
    // For one that is out of sight.
    long long frame_number_by_time(const std::string& vistel) const;
    bool marks_start(const std::string& vistel) const;

    collection_pane& pane_;
    open_event* event_ = nullptr;
    picture_wishes* wishes_ = nullptr;
    QTimer size_time_;
    bool shows_names_ = true;
    bool shows_health_ = false;
    std::unique_ptr<playback_tally> tally_;  // while health is shown
    std::map<std::string, shown> shown_;
    std::unique_ptr<serial_queue> overlays_;  // reads them; last: its work is done before all else goes
};

}  // namespace vistels
