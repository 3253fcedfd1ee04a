// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/icons.h"

#include <QDir>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>
#include <cmath>

#include "shell/kit/theme.h"

namespace vistels {
namespace {

struct icon_tints {
    QColor idle;
    QColor active;
    QColor disabled;
};

// Draws from the vector whatever size and ratio the style asks for.
class icon_engine : public QIconEngine {
  public:
    icon_engine(QString name, icon_tints tints) : name_(std::move(name)), tints_(std::move(tints)) {}

    void paint(QPainter* painter, const QRect& place, QIcon::Mode mode, QIcon::State state) override {
        const double ratio = painter->device()->devicePixelRatioF();
        const int size = std::min(place.width(), place.height());
        const QPixmap picture = icon_pixmap(name_, tint(mode, state), size, ratio);
        painter->drawPixmap(place.x() + (place.width() - size) / 2, place.y() + (place.height() - size) / 2,
                            picture);
    }

    // `size` is in device pixels when asked through scaledPixmap, whose default forwards here.
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return icon_pixmap(name_, tint(mode, state), std::min(size.width(), size.height()), 1);
    }

    QIconEngine* clone() const override { return new icon_engine(name_, tints_); }
    QString iconName() override { return name_; }

  private:
    const QColor& tint(QIcon::Mode mode, QIcon::State state) const {
        if (mode == QIcon::Disabled) return tints_.disabled;
        const bool at_work = mode == QIcon::Active || mode == QIcon::Selected || state == QIcon::On;
        return at_work ? tints_.active : tints_.idle;
    }

    QString name_;
    icon_tints tints_;
};

}  // namespace

QPixmap icon_pixmap(const QString& name, const QColor& tint, int size, double device_pixel_ratio) {
    const int pixels = static_cast<int>(std::ceil(size * device_pixel_ratio));
    const QString key =
        QStringLiteral("icon/%1/%2/%3/%4").arg(name, tint.name(QColor::HexArgb)).arg(pixels).arg(size);
    QPixmap found;
    if (pixels <= 0 || QPixmapCache::find(key, &found)) return found;

    QFile file(QStringLiteral(":/icons/%1.svg").arg(name));
    if (!file.open(QIODevice::ReadOnly)) return found;
    QByteArray drawing = file.readAll();
    drawing.replace("currentColor", tint.name(QColor::HexRgb).toLatin1());
    QSvgRenderer renderer(drawing);
    QPixmap made(pixels, pixels);
    made.fill(Qt::transparent);
    {
        QPainter painter(&made);
        painter.setOpacity(static_cast<double>(tint.alphaF()));
        renderer.render(&painter);
    }
    made.setDevicePixelRatio(device_pixel_ratio);
    QPixmapCache::insert(key, made);
    return made;
}

QStringList icon_names() {
    QStringList names = QDir(QStringLiteral(":/icons")).entryList({QStringLiteral("*.svg")}, QDir::Files);
    for (QString& name : names) name.chop(4);
    names.sort();
    return names;
}

QIcon icon(const QString& name, const theme& look) {
    const QColor disabled = mix(look.muted, look.pane, look.disabled_share);
    return QIcon(new icon_engine(name, {look.muted, look.text, disabled}));
}

QIcon icon(const QString& name, const QColor& tint) {
    return QIcon(new icon_engine(name, {tint, tint, tint}));
}

}  // namespace vistels
