#pragma once

#include "../zxalign/ModuleTest.h"
#include "mc/McLine.h"
#include "qx/QxImageViewer.h"
#include "reference/PlainLines.h"
#include "support/Waiting.h"
#include "zx/ZxInterpreter.h"
#include "zxalign/QxAlignSlices.h"
#include "zxalign/QxOrthoViewManager.h"
#include "zxalign/QxViewAlignSlicesCoronal.h"
#include "zxalign/QxViewAlignSlicesOrthogonalCommonToolBar.h"
#include "zxalign/QxViewAlignSlicesSagittal.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

using Bytes = std::vector<unsigned char>;

/// Orthogonal views of a module's stack, beside those of the editor itself, and what they have to show.
class OrthoViewTest : public ModuleTest {
protected:
  ~OrthoViewTest() override
  {
    useThreads("0");
    views = {};
    editor.reset();
  }
  void open(const McHandle<ZxField3>& field)
  {
    connect(module->portData, field);
    ASSERT_TRUE(module->getDataLattice());
    editor = std::make_unique<QxAlignSlices>(module.get());
    views = mcMake<QxOrthoViewManager>(editor.get(), module->getDataLattice(), false);
  }
  void openBoth(const McHandle<ZxField3>& field)
  {
    open(field);
    views->showSagittalView(true);
    views->showCoronalView(true);
  }
  static void useThreads(const char* value)
  {
    ZxInterpreter::getTheInterpreter().setVar("ZxAlign_useThreads", value);
  }
  QxViewAlignSlicesOrthogonalCommonToolBar& bar() { return *views->getToolBar(); }
  template <class T>
  T* child(const char* name)
  {
    return bar().findChild<T*>(name);
  }

  QxViewAlignSlicesOrthogonal* view(OrthoOrientation o)
  {
    if (o == OrthoOrientation::Sagittal) return views->getSagittalView();
    return views->getCoronalView();
  }
  Bytes shown(OrthoOrientation o)
  {
    const McTypedData2D& image = view(o)->image();
    return {image.data(), image.data() + image.rowBytes() * static_cast<std::size_t>(image.height())};
  }
  Bytes shownRow(OrthoOrientation o, int z)
  {
    const McTypedData2D& image = view(o)->image();
    return {image.row(z), image.row(z) + image.rowBytes()};
  }

  /// A column, computed from the transform as it is now.
  Bytes plainColumn(OrthoOrientation o, int z)
  {
    ZxLattice& lattice = *module->getDataLattice();
    const ZxDims& d = lattice.getDims();
    const bool sagittal = o == OrthoOrientation::Sagittal;
    Bytes slice(lattice.shape().sliceBytes());
    lattice.readSlice(z, slice.data());
    const reference::PlainSlice plain{slice.data(), lattice.primType(), lattice.getNumDataVars(), d.width,
                                      d.height};
    QTransform m;
    module->getSlice(z).getInverseMatrix(m, static_cast<float>(d.width / 2),
                                         static_cast<float>(d.height / 2));
    const int size = sagittal ? d.height : d.width;
    Bytes column(static_cast<std::size_t>(size) * plain.voxelBytes());
    if (!views->getUseMaxIntProj()) {
      const int cut = sagittal ? views->getSliceNumberSagittal() : views->getSliceNumberCoronal();
      reference::plainCut(plain, {m.m11(), m.m12(), m.m21(), m.m22(), m.dx(), m.dy()}, {!sagittal, cut, size},
                          column.data());
      return column;
    }
    for (int i = 0; i < size; ++i) {
      const QPointF a = sagittal ? mapPoint(m, 0, i) : mapPoint(m, i, 0);
      const QPointF b =
          sagittal ? mapPoint(m, std::max(1, d.width - 1), i) : mapPoint(m, i, std::max(1, d.height - 1));
      McLine part;
      if (!McLine{a.x(), a.y(), b.x(), b.y()}.intersect(0, 0, d.width - 1, d.height - 1, 0.0001, part))
        continue;
      const int n = std::max(1, static_cast<int>(part.length() / 0.9));
      reference::plainProjection(plain,
                                 {part.x1, part.y1, (part.x2 - part.x1) / n, (part.y2 - part.y1) / n, n},
                                 column.data() + static_cast<std::size_t>(i) * plain.voxelBytes());
    }
    return column;
  }
  /// What a view has to show when all is up to date: black outside of the visible range.
  Bytes expected(OrthoOrientation o)
  {
    Bytes image;
    for (int z = 0; z < module->getDataLattice()->getDims().slices; ++z) {
      Bytes column = plainColumn(o, z);
      if (z < views->getVisibleRangeZMin() || z > views->getVisibleRangeZMax())
        std::fill(column.begin(), column.end(), static_cast<unsigned char>(0));
      image.insert(image.end(), column.begin(), column.end());
    }
    return image;
  }
  bool isUpToDate()
  {
    for (const OrthoOrientation o : {OrthoOrientation::Sagittal, OrthoOrientation::Coronal})
      if (view(o) && shown(o) != expected(o)) return false;
    return true;
  }
  void turn(int z, const SliceXForm& x)
  {
    setTransform(z, x);
    views->updateView(z, z, OrthoOrientation::Both, 0, 0, false, true, false);
  }
  void shift(int from, int to, int dx, int dy)
  {
    for (int z = from; z <= to; ++z) {
      module->getSlice(z).translationX += static_cast<float>(dx);
      module->getSlice(z).translationY += static_cast<float>(dy);
    }
    views->updateView(from, to, OrthoOrientation::Both, dx, dy, true, false, false);
  }

  std::unique_ptr<QxAlignSlices> editor;
  McHandle<QxOrthoViewManager> views;
};

/// Random edits of all kinds through the manager. Slices that are shifted are turned by quarters only: the
/// pixels that are moved along equal those that a computation gives.
class RandomEdits {
public:
  RandomEdits(ZxAlignSlices& module, QxOrthoViewManager& views, std::uint32_t seed)
    : m_module(module), m_views(views), m_random(seed)
  {
  }
  void edit()
  {
    const int slices = m_module.getDataLattice()->getDims().slices;
    const int a = m_random.below(slices), b = m_random.below(slices);
    change(std::min(a, b), std::max(a, b), m_random.below(10));
  }

private:
  void change(int from, int to, int kind)
  {
    using enum OrthoOrientation;
    const ZxDims& d = m_module.getDataLattice()->getDims();
    if (kind == 0) return m_views.setSliceNumberSagittal(m_random.below(d.width));
    if (kind == 1) return m_views.setSliceNumberCoronal(m_random.below(d.height));
    if (kind == 2) return m_views.setSliceNumberAxial(m_random.below(d.slices));
    if (kind == 3) return m_views.setShowZRange(!m_views.getShowZRange());
    if (kind == 4) return m_views.setZRange(m_random.below(4));
    if (kind == 5) return move(from, to, m_random.below(9) - 4, m_random.below(9) - 4);
    const bool mirrors = kind == 6, turns = kind == 7 || kind == 8;
    for (int z = from; z <= to; ++z) {
      SliceInfo& s = m_module.getSlice(z);
      if (mirrors) s.flip = !s.flip;
      if (turns) s.rotation = static_cast<float>(m_random.below(8)) * 90.0f - 270.0f;
      if (kind == 9) s.setXForm({m_random.below(7) - 3.0f, m_random.below(7) - 3.0f, 0.0f, false});
    }
    m_views.updateView(from, to, Both, 1, -1, m_random.below(2) == 0 && (mirrors || turns), turns, mirrors);
  }
  void move(int from, int to, int dx, int dy)
  {
    for (int z = from; z <= to; ++z) {
      m_module.getSlice(z).translationX += static_cast<float>(dx);
      m_module.getSlice(z).translationY += static_cast<float>(dy);
    }
    m_views.updateView(from, to, OrthoOrientation::Both, dx, dy, true, false, false);
  }

  ZxAlignSlices& m_module;
  QxOrthoViewManager& m_views;
  Random m_random;
};
