#include "Camera.h"

#include "Stage.h"

#include <QApplication>
#include <QDialog>
#include <QImage>
#include <QMenu>
#include <QPainter>
#include <QPixmap>

namespace {

/// What is open over a window: dialogs first, menus above them, each kind in the order of opening.
QWidgetList openOver(const QWidget& window)
{
  QWidgetList dialogs, menus;
  const QWidgetList all = QApplication::topLevelWidgets();
  for (QWidget* widget : all) {
    if (!widget->isVisible() || widget == &window) continue;
    if (qobject_cast<QDialog*>(widget)) dialogs << widget;
    if (qobject_cast<QMenu*>(widget)) menus << widget;
  }
  return dialogs + menus;
}

QImage partOf(const QPixmap& picture, const QRect& part)
{
  const QImage image = picture.toImage().convertToFormat(QImage::Format_RGB888);
  if (part.isNull()) return image;
  const double scale = picture.devicePixelRatio();
  return image.copy(QRect(part.topLeft() * scale, part.size() * scale).intersected(image.rect()));
}

} // namespace

void Camera::takeWindow(const QString& name, QWidget& window, const QRect& part) const
{
  Stage::settle();
  QPixmap picture = window.grab();
  QPainter painter(&picture);
  const QWidgetList above = openOver(window);
  for (QWidget* widget : above)
    painter.drawPixmap(widget->mapToGlobal(QPoint()) - window.mapToGlobal(QPoint()), widget->grab());
  painter.end();
  write(name, partOf(picture, part));
}

void Camera::takeWidget(const QString& name, QWidget& widget, const QRect& part) const
{
  Stage::settle();
  write(name, partOf(widget.grab(), part));
}

void Camera::write(const QString& name, const QImage& picture) const
{
  const QString file = m_folder + '/' + name + ".png";
  if (!picture.save(file)) Stage::fail("Cannot write " + file + '.');
}
