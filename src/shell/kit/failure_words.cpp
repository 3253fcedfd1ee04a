// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/failure_words.h"

#include <QCoreApplication>

namespace vistels {

namespace {

QString translated(const char* english) {
    return QCoreApplication::translate("core", english);
}

}  // namespace

QString words_of(const failure& told, shown_paths paths) {
    const auto translate = [](const char* english) { return translated(english).toStdString(); };
    return QString::fromStdString(told.worded(translate, paths));
}

QString words_of_term(const std::string& english) {
    return translated(english.c_str());
}

}  // namespace vistels
