#include "qx/QxMainWindow.h"

#include <QMenuBar>
#include <QStackedLayout>

namespace {
QxMainWindow* theMainWindow = nullptr;
}

QxMainWindow::QxMainWindow(QWidget* parent) : QMainWindow(parent)
{
  theMainWindow = this;
  auto* centre = new QWidget(this);
  m_centre = new QStackedLayout(centre);
  m_centre->addWidget(new QWidget(centre));
  setCentralWidget(centre);
  for (const char* title : {"&File", "&Edit", "&Pool", "Ex&plorer", "&Create", "&Window", "&Help"})
    menuBar()->addMenu(title);
}

QxMainWindow::~QxMainWindow() { theMainWindow = nullptr; }

QxMainWindow* QxMainWindow::getTheMainWindow() noexcept { return theMainWindow; }
