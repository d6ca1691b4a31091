#pragma once

#include "qx/QxMainWindow.h"
#include "support/Volumes.h"
#include "support/Waiting.h"
#include "zx/ZxFileAccess.h"
#include "zx/ZxModule.h"
#include "zx/ZxObjectPool.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QSettings>
#include <QTest>
#include <QTreeWidget>

#include <atomic>
#include <functional>

/// A module with one port of every kind. Notes which ports are new in a pass, and does what a test asks for.
class Probe : public ZxCompModule {
public:
  static const McTypeInfo& getClassTypeId()
  {
    static const McTypeInfo type("Probe", {&ZxCompModule::getClassTypeId()},
                                 []() -> McHandable* { return new Probe; });
    return type;
  }
  const McTypeInfo& getTypeId() const override { return getClassTypeId(); }
  Probe()
    : ZxCompModule({&ZxLatticeInterface::getClassTypeId()}),
      labels(this, "LabelField", {&ZxLabelLatticeInterface::getClassTypeId()}),
      numbers(this, "numbers", "Numbers:", {{"a", 1.0F}, {"b", 2.0F}}),
      menu(this, "menu", "Menu:", {"one", "two"}, 0), buttons(this, "buttons", "Action:", {"go", "stop"})
  {
  }
  void compute() override
  {
    std::string news;
    for (const ZxPort* p : getPorts())
      if (p->isNew()) news += p->getName() + ' ';
    passes.push_back(news);
    if (work) work();
  }

  ZxConnection labels;
  ZxPortFloatTextN numbers;
  ZxPortMultiMenu menu;
  ZxPortButtonList buttons;
  std::function<void()> work;
  std::vector<std::string> passes; ///< the ports that were new in each
};

/// Files that are not there: "X.vol" is a volume, unless its name says that it is damaged or read slowly.
class FakeFiles : public ZxFileAccess {
public:
  std::vector<ZxFileFormat> readableFormats() const override { return {{"Volume", {".vol"}}}; }
  std::vector<ZxFileFormat> writableFormats() const override { return readableFormats(); }
  std::string checkWritable(const ZxSpatialData&, const std::string& path) const override
  {
    return path.ends_with(".vol") ? "" : "Cannot write \"" + path + "\": unknown format.";
  }
  static inline std::atomic<bool> isDiskFull = false;
  static inline std::atomic<bool> isHeld = false; ///< slow files wait while this is set
  static inline std::atomic<int> writes = 0;

private:
  ZxFileOutcome readVolume(const ZxReadRequest& request) override
  {
    const std::string& path = request.inputs.front();
    if (path.find("damaged") != path.npos)
      return {ZxFileOutcome::State::Failed, {}, "Cannot read \"" + path + "\": it is damaged."};
    while (path.find("slow") != path.npos && isHeld) QTest::qSleep(1);
    const auto field =
        makeField<std::uint8_t>({7, 5, 3}, 1, [](int x, int y, int k, int) { return 100 * k + 10 * y + x; });
    field->setLabel(McString(path.substr(path.rfind('/') + 1)));
    return {ZxFileOutcome::State::Done, field, {}};
  }
  ZxFileOutcome writeVolume(const ZxSpatialData&, const std::string& path) override
  {
    ++writes;
    if (isDiskFull)
      return {ZxFileOutcome::State::Failed, {}, "Cannot write \"" + path + "\": the disk is full."};
    return {};
  }
};

/// The window with an empty pool and settings as on the first day.
class Desktop : public testing::Test {
protected:
  Desktop()
  {
    Probe::getClassTypeId();
    ZxFileAccess::setTheFileAccess(std::make_unique<FakeFiles>());
    FakeFiles::isDiskFull = FakeFiles::isHeld = false;
    FakeFiles::writes = 0;
    QSettings("zxalign", "orvel").clear();
    reopen();
  }
  ~Desktop() override
  {
    pool.clear();
    window.reset();
  }

  /// Makes the window anew, as when the program is started again.
  void reopen()
  {
    window.reset();
    window = std::make_unique<QxMainWindow>();
    window->show();
    EXPECT_TRUE(waitForActive(window.get()));
  }
  static void settle() { QCoreApplication::processEvents(); }

  template <class T = QWidget>
  T* find(const char* name) const
  {
    auto* found = window->findChild<T*>(name);
    EXPECT_NE(found, nullptr) << name;
    return found;
  }
  /// An entry of a menu of the menu bar, as it is when the menu opens.
  QAction* menuEntry(const char* menu, const char* name) const
  {
    for (QAction* top : window->menuBar()->actions()) {
      if (top->text() != menu) continue;
      Q_EMIT top->menu()->aboutToShow();
      return top->menu()->findChild<QAction*>(name);
    }
    return nullptr;
  }
  /// The names in the list, each below its parent's as "parent/name".
  QStringList listed() const
  {
    QStringList names;
    for (QTreeWidgetItemIterator it(find<QTreeWidget>("poolList")); *it; ++it)
      names << ((*it)->parent() ? (*it)->parent()->text(0) + '/' : QString()) + (*it)->text(0);
    return names;
  }

  McHandle<ZxField3> addVolume(const char* label, int slices = 3)
  {
    auto field = makeField<std::uint8_t>({7, 5, slices}, 1,
                                         [](int x, int y, int k, int) { return 100 * k + 10 * y + x; });
    field->setLabel(label);
    pool.add(field.get());
    return field;
  }
  McHandle<Probe> addProbe()
  {
    auto probe = mcMake<Probe>();
    probe->setLabel("Probe");
    pool.add(probe.get());
    return probe;
  }
  /// Adds a module and shows its ports.
  McHandle<Probe> showProbe()
  {
    const auto probe = addProbe();
    window->select(probe.get());
    settle();
    return probe;
  }

  ZxObjectPool& pool = ZxObjectPool::getThePool();
  std::unique_ptr<QxMainWindow> window;
};
