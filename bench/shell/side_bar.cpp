// SPDX-License-Identifier: GPL-3.0-or-later
// How long the side bar takes to show a vault of 2,000 collections, to take in a change of it, to scroll a
// page, to find by name and to bring the open event's line up to date. Milliseconds of processor time.
//   bench_shell_side_bar [--short]
#include <QApplication>
#include <QImage>
#include <QScrollBar>
#include <QTreeView>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

#include "shell/kit/theme.h"
#include "shell/panes/side_bar/content_model.h"
#include "shell/panes/side_bar/content_side_bar.h"
#include "support/measure.h"

using namespace vistels;

namespace {

constexpr int collections = 2000;
int rounds = 40;

double processor_milliseconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

std::vector<content_vault> vault_of(int count, int first) {
    content_vault vault;
    vault.name = "Season";
    vault.path = "/Season.VVault";
    for (int i = first; i < first + count; ++i) {
        const std::string name = "Match " + std::to_string(i);
        vault.items.push_back(
            {item_kind::collection, name, vault.path + "/" + name, vault.path + "/" + name, i});
    }
    return {vault};
}

void measure(const char* what, const std::function<void(int)>& work) {
    std::vector<double> all;
    for (int round = 0; round < rounds; ++round) {
        const double before = processor_milliseconds();
        work(round);
        all.push_back(processor_milliseconds() - before);
    }
    std::sort(all.begin(), all.end());
    std::printf("%-44s median %7.2f  p95 %7.2f\n", what, all[all.size() / 2], all[all.size() * 95 / 100]);
}

}  // namespace

int main(int argument_count, char** arguments) {
    if (bench::take_short(argument_count, arguments)) rounds = 2;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argument_count, arguments);
    use_theme(application, theme_choice::dark);
    QImage image(208, 900, QImage::Format_RGB32);
    const auto vaults = vault_of(collections, 0);

    measure("a new side bar, filled and painted", [&](int) {
        content_side_bar bar;
        bar.resize(image.size());
        bar.show();
        bar.set_content(vaults);
        bar.render(&image);
    });
    content_side_bar bar;
    bar.resize(image.size());
    bar.show();
    bar.set_content(vaults);
    measure("one collection more, or less, and painted", [&](int round) {
        bar.set_content(vault_of(collections - round % 2, 1));
        bar.render(&image);
    });
    measure("a page further, painted", [&](int) {
        QScrollBar* scroll = bar.list()->verticalScrollBar();
        scroll->setValue(scroll->value() + scroll->pageStep());
        bar.render(&image);
    });
    measure("the open event's line", [&](int round) {
        bar.set_open("/Season.VVault/Match 1500", QString::number(round));
        bar.render(&image);
    });
    auto* model = bar.list()->model();
    measure("a filter set and taken away, painted", [&](int round) {
        static_cast<content_model*>(model)->set_filter(round % 2 == 0 ? QStringLiteral("77") : QString());
        bar.render(&image);
    });
    return 0;
}
