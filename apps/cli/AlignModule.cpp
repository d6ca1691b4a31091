#include "AlignModule.h"

#include "Console.h"
#include "Failure.h"
#include "StoredAlignment.h"
#include "zx/ZxObjectPool.h"
#include "zx/ZxPackage.h"

#include <array>

namespace cli {
namespace {

constexpr const char* kDataWindow = "DataWindow";

} // namespace

AlignModule::AlignModule(Console& console, const PlugInOptions& plugIns) : m_console(console)
{
  const std::string problem = ZxPackage::load("zxalign");
  if (!problem.empty()) throw Failure(problem);
  plugIns.announce();
  m_module =
      McHandle<ZxCompModule>(dynamic_cast<ZxCompModule*>(ZxObjectPool::getThePool().create("ZxAlignSlices")));
  m_control = dynamic_cast<ZxAlignControl*>(m_module.get());
  if (!m_control) throw Failure("The package zxalign does not have the module ZxAlignSlices.");
  for (const ZxAlignPlugIn& plugIn : m_control->plugIns())
    if (!plugIn.problem.empty())
      m_console.remark("The plug-in " + plugIn.name + " was not loaded: " + plugIn.problem + ".");
  m_console.remarks();
}

AlignModule::~AlignModule()
{
  m_module = {};
  ZxObjectPool::getThePool().clear();
}

template <class Port>
Port& AlignModule::port(const char* name) const
{
  auto* found = dynamic_cast<Port*>(m_module->findPort(name));
  if (!found) throw Failure("The module ZxAlignSlices lacks the port " + std::string(name) + ".");
  return *found;
}

void AlignModule::connectInput(ZxSpatialData& input, Window window)
{
  const std::string name = input.getLabel().str();
  const bool hasWindow = input.parameters().findReals(kDataWindow, 2, std::array<double, 2>{}.data());
  // With a window of its own nobody looks for the range of the values.
  const bool lendsWindow = window == Window::Later && !hasWindow;
  if (lendsWindow) input.parameters().setReals(kDataWindow, {0.0, 255.0});
  m_module->portData.connect(&input);
  m_module->fire();
  if (lendsWindow) input.parameters().remove(kDataWindow);
  if (ZxWorkArea::getTheWorkArea()->wasInterrupted()) throw Stopped("Stopped while reading " + name);
  // A damaged slice met on the way, in the search for the range, would only be met again.
  if (m_console.holdsCause()) throw Failure(m_console.reason({}));
  if (!m_module->portData.isConnected() || m_control->numSlices() == 0)
    throw Failure(name + ": " + m_console.reason("The volume cannot be aligned."));
  m_console.remarks();
}

void AlignModule::connect(const char* name, ZxSpatialData& data)
{
  auto& connection = port<ZxConnection>(name);
  connection.connect(&data);
  m_module->fire();
  if (!connection.isConnected())
    throw Failure(m_console.reason(data.getLabel().str() + " does not fit the input."));
  m_console.remarks();
}

void AlignModule::set(const std::string& setting, const std::string& value)
{
  const std::string problem = m_control->setSetting(setting, value);
  if (!problem.empty()) throw Failure(problem);
}

void AlignModule::setWindow(float min, float max)
{
  if (min > max) throw Failure("--window takes the grey value of black first: MIN cannot be above MAX.");
  auto& window = port<ZxPortFloatTextN>("linearRange");
  window.setValue(0, min);
  window.setValue(1, max);
  m_module->fire();
}

float AlignModule::windowMin() const { return port<ZxPortFloatTextN>("linearRange").getValue(0); }
float AlignModule::windowMax() const { return port<ZxPortFloatTextN>("linearRange").getValue(1); }

void AlignModule::setInterpolation(Interpolation interpolation)
{
  port<ZxPortMultiMenu>("resampleMethod").setValue(interpolation == Interpolation::Linear ? 1 : 0);
  m_module->fire();
}

void AlignModule::storeAlignment()
{
  if (!m_control->saveAlignment()) throw Failure(m_console.reason("The alignment could not be stored."));
  // The volume may have been the result of an earlier alignment: this one is yet to be applied to it.
  ZxParamBundle& parameters = static_cast<ZxData*>(m_module->portData.getSource())->parameters();
  if (isAligned(parameters)) parameters.setNum("AlignIsApplied", 0);
}

McHandle<ZxSpatialData> AlignModule::alignedVolume()
{
  McHandle<ZxSpatialData> volume = m_control->alignedVolume();
  if (!volume) throw Failure(m_console.reason("The volume could not be resampled."));
  return volume;
}

McHandle<ZxSpatialData> AlignModule::alignedLabels()
{
  McHandle<ZxSpatialData> labels = m_control->alignedLabels();
  if (!labels) throw Failure(m_console.reason("The label field could not be resampled."));
  return labels;
}

} // namespace cli
