#include "ZxIconEngine.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QSvgRenderer>

namespace {

QColor colorOf(QIcon::Mode mode)
{
  const QPalette palette = QGuiApplication::palette();
  switch (mode) {
  case QIcon::Disabled:
    return palette.color(QPalette::Disabled, QPalette::WindowText);
  case QIcon::Selected:
    return palette.color(QPalette::HighlightedText);
  default:
    return palette.color(QPalette::WindowText);
  }
}

} // namespace

void ZxIconEngine::paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state)
{
  const double ratio = painter->device() ? painter->device()->devicePixelRatio() : 1.0;
  QPixmap drawn = pixmap(rect.size() * ratio, mode, state);
  drawn.setDevicePixelRatio(ratio);
  painter->drawPixmap(rect, drawn);
}

QPixmap ZxIconEngine::pixmap(const QSize& size, QIcon::Mode mode, QIcon::State)
{
  if (size.isEmpty()) return {};
  const QColor color = colorOf(mode);
  const QString key = QStringLiteral("ZxIcon/%1/%2/%3/%4/%5")
                          .arg(m_name)
                          .arg(size.width())
                          .arg(size.height())
                          .arg(int(mode))
                          .arg(color.rgba(), 0, 16);
  QPixmap drawn;
  if (QPixmapCache::find(key, &drawn)) return drawn;
  drawn = draw(size, mode, color);
  QPixmapCache::insert(key, drawn);
  return drawn;
}

QPixmap ZxIconEngine::draw(const QSize& size, QIcon::Mode mode, const QColor& color) const
{
  QByteArray svg = m_svg;
  svg.replace("currentColor", color.name().toUtf8());
  QSvgRenderer renderer(svg);
  QPixmap drawn(size);
  drawn.fill(Qt::transparent);
  QPainter painter(&drawn);
  const QSizeF shown = QSizeF(renderer.defaultSize()).scaled(size, Qt::KeepAspectRatio);
  const QPointF corner(0.5 * (size.width() - shown.width()), 0.5 * (size.height() - shown.height()));
  renderer.render(&painter, QRectF(corner, shown));
  if (mode == QIcon::Disabled) {
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(drawn.rect(), color);
  }
  return drawn;
}
