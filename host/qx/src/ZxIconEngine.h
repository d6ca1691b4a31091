#pragma once

#include <QIconEngine>

/// Draws an icon from a vector picture in the colours of the program's palette.
///
/// "currentColor" in the picture is the palette's colour of text (of selected text on a selection); other
/// colours stay. A disabled icon is drawn in the colour of disabled text alone.
class ZxIconEngine : public QIconEngine {
public:
  ZxIconEngine(QString name, QByteArray svg) : m_name(std::move(name)), m_svg(std::move(svg)) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override;
  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override;
  QIconEngine* clone() const override { return new ZxIconEngine(*this); }
  QString key() const override { return QStringLiteral("ZxIconEngine"); }
  QString iconName() override { return m_name; }
  bool isNull() override { return m_svg.isEmpty(); }

private:
  QPixmap draw(const QSize& size, QIcon::Mode mode, const QColor& color) const;

  QString m_name;
  QByteArray m_svg;
};
