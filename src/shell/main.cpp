// SPDX-License-Identifier: GPL-3.0-or-later
#include <QApplication>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "app/start/start_up.h"
#include "app/vaults/home_vault.h"
#include "shell/event/event_messages.h"
#include "shell/event/event_session.h"
#include "shell/kit/start_trace.h"
#include "shell/kit/theme.h"
#include "shell/program/application_options.h"
#include "shell/program/build_watch.h"
#include "shell/program/display_check.h"
#include "shell/program/main_thread_log.h"
#include "shell/program/qt_run_loop.h"
#include "shell/program/screenshot.h"
#include "shell/program/termination_watch.h"
#include "shell/window/event_opener.h"
#include "shell/window/main_window.h"
#include "shell/window/window_memory.h"
#include "shell/window/window_set.h"

namespace vistels {
namespace {

constexpr int wrong_usage = 2;

// Qt ends the process when it cannot reach the display that the environment names.
void say_fatal(QtMsgType type, const QMessageLogContext&, const QString& message) {
    const bool is_warning = type == QtWarningMsg || type == QtCriticalMsg;
    if (type == QtFatalMsg) {
        std::fprintf(
            stderr,
            "vistels: no window can be shown: the display cannot be reached. vistels-cli does its work "
            "without one; see \"vistels-cli --help\".\n");
        std::_Exit(EXIT_FAILURE);
    }
    if (is_warning && qEnvironmentVariableIsSet("VISTELS_TRACE_QT")) {
        std::fprintf(stderr, "%s\n", qUtf8Printable(message));
    }
}

theme_choice wanted_theme(const std::string& name) {
    if (name == "dark") return theme_choice::dark;
    if (name == "light") return theme_choice::light;
    return theme_choice::desktop;
}

// The steps of the start, for those who measure it.
void trace_front(window_set& windows) {
    QObject::connect(&windows, &window_set::appeared, &windows, [] { trace_start("window shown"); });
    main_window& front = *windows.front();
    QObject::connect(&front.opener(), &event_opener::settled, &front, [&front] {
        if (front.session().is_open()) trace_start("event open");
    });
    if (!qEnvironmentVariableIsSet("VISTELS_TRACE_START")) return;
    constexpr int between_looks = 5;
    auto* watch = new QTimer(&front);
    QObject::connect(watch, &QTimer::timeout, &front, [&front, watch] {
        if (!front.session().has_all_pictures()) return;
        trace_start("first pictures of all vistels");
        watch->stop();
    });
    watch->start(between_looks);
}

int run(QApplication& application, const application_options& options, termination_watch& ending) {
    running_executable executable;
    const home_places places = find_home_places(options.home);
    auto started = start_up(places, VISTELS_BUILD_NUMBER, 0);
    if (!started) {
        std::fprintf(stderr, "vistels: %s\n", started.message().c_str());
        return EXIT_FAILURE;
    }
    const std::string theme = options.theme.empty() ? load_window_memory(places).theme : options.theme;
    use_theme(application, wanted_theme(theme));
    const main_thread_log waits(places);
    qt_run_loop loop;
    const bool is_alone = started.value().run->is_alone();
    window_set windows(places, loop,
                       {std::move(started.value().trees), is_alone, {options.width, options.height}});
    window_set::first first{options.paths, started.value().windows, messages_of_start(started.value()),
                            started.value().folder_last_focus};
    // Beside another program all but one would be read-only copies of what is open there.
    const std::size_t most_listed = options.paths.empty() ? 1 : 0;
    if (!is_alone && first.listed.size() > most_listed) first.listed.resize(most_listed);
    windows.begin(std::move(first));
    trace_front(windows);
    build_watch builds(places, VISTELS_BUILD_NUMBER, std::move(executable), loop);
    QObject::connect(&builds, &build_watch::told, &windows, [&windows](const user_message& message) {
        if (windows.front()) windows.front()->tell(message);
    });
    std::unique_ptr<screenshot> picture;
    if (!options.screenshot.empty()) {
        picture = std::make_unique<screenshot>(
            *windows.front(), screenshot_wish{options.screenshot, options.at_seconds, options.filter},
            [](bool written) { QApplication::exit(written ? 0 : EXIT_FAILURE); });
    }
    ending.start([&windows] {
        windows.stop_jobs();
        windows.quit();
    });
    const int status = QApplication::exec();
    windows.wait_until_kept();  // in the same file, of the window that had the focus
    const auto noted = note_clean_quit(started.value());
    if (!noted) std::fprintf(stderr, "vistels: %s\n", noted.message().c_str());
    return status;
}

}  // namespace
}  // namespace vistels

int main(int argument_count, char** arguments) {
    using namespace vistels;
    trace_start("begin");
    const auto options = read_options({arguments + 1, arguments + argument_count});
    if (!options) {
        std::fprintf(stderr, "vistels: %s See \"vistels --help\".\n", options.message().c_str());
        return wrong_usage;
    }
    if (options.value().show_help || options.value().show_version) {
        std::fputs(options.value().show_help ? help_text().c_str() : "vistels " VISTELS_VERSION "\n", stdout);
        return EXIT_SUCCESS;
    }
    const auto missing =
        missing_display([](const char* name) { return qEnvironmentVariable(name).toStdString(); });
    if (missing) {
        std::fprintf(stderr, "%s\n", missing->c_str());
        return EXIT_FAILURE;
    }
    qInstallMessageHandler(say_fatal);
    termination_watch ending;
    QApplication application(argument_count, arguments);
    QApplication::setApplicationName(QStringLiteral("vistels"));
    QApplication::setApplicationVersion(QLatin1String(VISTELS_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("io.vistels.Vistels"));
    return run(application, options.value(), ending);
}
