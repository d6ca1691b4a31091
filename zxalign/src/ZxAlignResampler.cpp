#include "ZxAlignResampler.h"

#include "AlignmentMatrix.h"
#include "zx/ZxMessage.h"
#include "zx/ZxWorkArea.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

#include <algorithm>
#include <cstdint>
#include <memory>

namespace {

ZxMessage* msg() { return ZxMessage::getTheMsg(); }

bool endWrite(ZxLattice& output, int k)
{
  if (output.endWrite(k)) return true;
  msg()->printf("Slice %d of the result cannot be written.", k);
  return false;
}

bool holdsLabels(const ZxLattice& lattice)
{
  return dynamic_cast<const ZxLabelLattice*>(&lattice) != nullptr;
}

} // namespace

ZxAlignResampler::ZxAlignResampler(ZxAlignSlices& module)
  : m_module(module), m_data(module.sliceData()), m_inputData(m_data.getSpatialData()),
    m_input(*m_data.getLattice()), m_inputIsLabels(holdsLabels(m_input)),
    m_width(module.alignSettings().outputWidth), m_height(module.alignSettings().outputHeight)
{
  const ZxDims& dims = m_input.getDims();
  if (module.alignSettings().automaticOrigin) {
    int x[2], y[2];
    module.calculateOrigin(x, y, 0, 0);
    m_borders = {x[0], x[1], y[0], y[1]};
  } else {
    m_borders = centredBorders(dims, m_width, m_height);
  }
}

void ZxAlignResampler::run(bool reuse)
{
  const McHandle<ZxSpatialData> result = obtainResult(reuse);
  if (!result) return;
  describeResult(*result);
  const ZxWorkingPhase phase("Resampling");
  if (resampleImage(*result->getLattice()) == Outcome::Stopped) return;
  if (m_inputIsLabels) {
    result->parameters() = *m_data.getParameters();
    storeGeometry(*m_data.getSpatialData(), result->parameters());
  }
  m_module.setResult(0, result.get());
  if (m_module.portLabelField.isConnected()) resampleLabels(reuse);
}

McHandle<ZxSpatialData> ZxAlignResampler::obtainResult(bool reuse)
{
  if (reuse) {
    bool failed = false;
    McHandle<ZxSpatialData> existing = existingResult(failed);
    if (existing || failed) return existing;
  }
  McHandle<ZxSpatialData> result = createResult();
  if (!result) msg()->printf("Error creating result");
  return result;
}

McHandle<ZxSpatialData> ZxAlignResampler::existingResult(bool& failed)
{
  failed = true;
  ZxData* data = m_module.getResult(0);
  auto* result = dynamic_cast<ZxSpatialData*>(data);
  ZxLattice* lattice = result ? result->getLattice() : nullptr;
  if (!data) {
    msg()->printf("No result.");
  } else if (!lattice) {
    msg()->printf("No result lattice.");
  } else if (lattice->getNumDataVars() != m_input.getNumDataVars()) {
    msg()->printf("Result lattice has different number of data variables.");
  } else if (lattice->getDims() != ZxDims{m_width, m_height, m_input.getDims().slices} ||
             lattice->primType() != m_input.primType() || holdsLabels(*lattice) != m_inputIsLabels) {
    msg()->printf("Previous result has different dimensions. Cannot reuse it.");
    failed = false;
  } else {
    failed = false;
    lattice->setBoundingBox(outputBox(m_input.getDims(), m_input.getBoundingBox(), m_width, m_height));
    return McHandle<ZxSpatialData>(result);
  }
  return {};
}

McHandle<ZxSpatialData> ZxAlignResampler::createResult()
{
  ZxLatticeShape shape = m_input.shape();
  shape.dims.width = m_width;
  shape.dims.height = m_height;
  const ZxBox3f box = outputBox(m_input.getDims(), m_input.getBoundingBox(), m_width, m_height);
  if (m_inputIsLabels) {
    auto labels = ZxLabelLattice3::create(shape);
    if (!labels) return {};
    labels->setBoundingBox(box);
    return McHandle<ZxSpatialData>(new ZxUniformLabelField3(std::move(labels)));
  }
  auto lattice = ZxLattice3::create(shape);
  if (!lattice) return {};
  lattice->setBoundingBox(box);
  return McHandle<ZxSpatialData>(ZxField3::create(std::move(lattice)));
}

void ZxAlignResampler::describeResult(ZxSpatialData& result)
{
  result.setLabel(ZxData::composeLabel(m_data.getInputDataName(), "align"));
  ZxParamBundle& parameters = result.parameters();
  parameters.setNum("AlignIsApplied", 1);
  m_module.saveTransform(parameters, m_module.m_slices);
  storeGeometry(*m_data.getSpatialData(), parameters);
  result.touch();
}

void ZxAlignResampler::storeGeometry(const ZxSpatialData& input, ZxParamBundle& parameters) const
{
  // The output's first voxel lies a border before the input's.
  ZxFileGeometry geometry = ZxFileGeometry::of(input);
  geometry.origin[0] -= m_borders.left * geometry.voxelSize[0];
  geometry.origin[1] -= m_borders.top * geometry.voxelSize[1];
  geometry.store(parameters);
}

int ZxAlignResampler::bandRows() const
{
  // About 10 ms of work: often enough to stop at once, seldom enough to cost nothing.
  constexpr int pixelsPerBand = 1 << 20;
  return std::max(1, pixelsPerBand / m_width);
}

void ZxAlignResampler::showProgress(int k, int row)
{
  const double rows = static_cast<double>(k) * m_height + row;
  // The slices of the labels follow those of the image.
  const int passes = m_module.portLabelField.isConnected() ? 2 : 1;
  const double all = static_cast<double>(m_input.getDims().slices) * passes * m_height;
  ZxWorkArea::getTheWorkArea()->setProgressFraction(static_cast<float>(rows / all));
}

kernels::ResampleFrame ZxAlignResampler::frameOf(int k, int width, int height) const
{
  QTransform inverse;
  m_module.getSlice(k).getInverseMatrix(inverse, sliceCentre(width), sliceCentre(height));
  return {width, height, m_width, m_height, m_borders.left, m_borders.top, toAffine(inverse)};
}

ZxAlignResampler::Outcome ZxAlignResampler::resampleImage(ZxLattice& output)
{
  const int slices = m_input.getDims().slices;
  for (int k = 0; k < slices; ++k) {
    ZxWorkArea::getTheWorkArea()->setProgressText("Resampling slice %d of %d", k + 1, slices);
    if (resampleSlice(k, output) == Outcome::Stopped) return Outcome::Stopped;
  }
  return Outcome::Done;
}

ZxAlignResampler::Outcome ZxAlignResampler::resampleSlice(int k, ZxLattice& output)
{
  const unsigned char* source = m_data.getOriginalDataPtr(k);
  void* target = source ? output.beginWrite(k) : nullptr;
  if (!target) {
    if (source) msg()->printf("Slice %d of the result cannot be written.", k);
    return Outcome::Stopped;
  }
  const ZxDims& dims = m_input.getDims();
  const kernels::ResampleFrame frame = frameOf(k, dims.width, dims.height);
  const std::vector<float> background = backgroundOf(k, source);
  const bool linear = m_module.portResampleMethod.getValue() == 1 && !m_inputIsLabels;
  const auto interpolation = linear ? kernels::Interpolation::Linear : kernels::Interpolation::Nearest;
  const int band = bandRows();
  for (int row = 0; row < m_height; row += band) {
    const int end = std::min(row + band, m_height);
    mcVisit(m_input.primType(), [&](auto zero) {
      using T = decltype(zero);
      kernels::resampleRows(frame, reinterpret_cast<const T*>(source), m_input.getNumDataVars(),
                            interpolation, background.data(), static_cast<T*>(target), row, end);
    });
    showProgress(k, end);
    if (ZxWorkArea::getTheWorkArea()->wasInterrupted(1)) return Outcome::Stopped;
  }
  return endWrite(output, k) ? Outcome::Done : Outcome::Stopped;
}

std::vector<float> ZxAlignResampler::backgroundOf(int k, const unsigned char* source)
{
  const ZxAlignSettings& settings = m_module.alignSettings();
  const int channels = m_input.getNumDataVars();
  std::vector<float> background(static_cast<std::size_t>(std::max(channels, 4)), 0.0f);
  if (channels == 1)
    background[0] = settings.background;
  else
    std::copy(settings.backgroundColour, settings.backgroundColour + 4, background.begin());
  if (!settings.mostFrequentBackground) return background;

  const ZxDims& dims = m_input.getDims();
  McDArray<float> color;
  m_module.computeMostFrequentColor(source, dims.width, dims.height, channels, m_input.primType(), color);
  std::copy(color.begin(), color.end(), background.begin());
  const auto value = [&](std::size_t i) { return static_cast<double>(background[i]); };
  if (channels == 1)
    msg()->printf("Background color slice %d: %.0f", k, value(0));
  else if (!color.isEmpty())
    msg()->printf("Background color slice %d: %.0f %.0f %.0f %.0f", k, value(0), value(1), value(2),
                  value(3));
  return background;
}

void ZxAlignResampler::resampleLabels(bool reuse)
{
  const McHandle<ZxSpatialData> input(
      m_module.portLabelField.getSpatialData()); // Pending events may drop it.
  auto* labels = input ? dynamic_cast<ZxLabelLattice*>(input->getLattice()) : nullptr;
  if (!labels) return msg()->printf("No input LabelLattice or no output LabelLattice.");
  const McHandle<ZxUniformLabelField3> result = obtainLabels(*input, reuse);
  if (!result) return;
  ZxWorkArea::getTheWorkArea()->setProgressText("Realigning Labels...");
  ZxParamBundle& parameters = result->parameters();
  m_module.saveTransform(parameters, m_module.m_slices);
  parameters.merge(input->parameters());
  storeGeometry(*m_inputData, parameters); // Labels lie where the voxels lie that they name.
  result->setLabel(ZxData::composeLabel(input->getLabel(), "align"));
  parameters.setNum("AlignIsApplied", 1);
  result->touch();
  m_module.setResult(1, result.get());
  if (resampleLabelSlices(*labels, *result->getLattice()) == Outcome::Stopped) return;
  m_module.m_appliedLabelSlices = m_module.m_slices;
}

McHandle<ZxUniformLabelField3> ZxAlignResampler::obtainLabels(const ZxSpatialData& input, bool reuse)
{
  const ZxLatticeShape shape{
      {m_width, m_height, m_input.getDims().slices}, 1, input.getLattice()->primType(), ZxCoordType::Uniform};
  const ZxBox3f box = outputBox(m_input.getDims(), m_input.getBoundingBox(), m_width, m_height);
  if (reuse) {
    ZxData* data = m_module.getResult(1);
    auto* result = dynamic_cast<ZxUniformLabelField3*>(data);
    if (!result) {
      msg()->printf("No input LabelLattice or no output LabelLattice.");
      return {};
    }
    ZxLattice& existing = *result->getLattice();
    if (existing.getDims() == shape.dims && existing.primType() == shape.primType) {
      existing.setBoundingBox(box);
      return McHandle<ZxUniformLabelField3>(result);
    }
    msg()->printf("Previous result has different dimensions. Cannot reuse it.");
  }
  auto lattice = ZxLabelLattice3::create(shape);
  if (!lattice) {
    msg()->printf("Error creating result Label Lattice.");
    return {};
  }
  lattice->setBoundingBox(box);
  return mcMake<ZxUniformLabelField3>(std::move(lattice));
}

ZxAlignResampler::Outcome ZxAlignResampler::resampleLabelSlices(ZxLattice& input, ZxLattice& output)
{
  ZxWorkArea* workArea = ZxWorkArea::getTheWorkArea();
  const ZxDims& dims = input.getDims();
  // The label field may be one that was connected after the input and has fewer slices.
  const int slices = std::min(dims.slices, m_input.getDims().slices);
  std::vector<unsigned char> source(input.shape().sliceBytes());
  for (int k = 0; k < slices; ++k) {
    workArea->setProgressText("Resampling slice %d of %d", k + 1, slices);
    void* target = output.beginWrite(k);
    if (!target || !input.readSlice(k, source.data())) {
      msg()->printf("Slice %d of the labels cannot be %s.", k, target ? "read" : "written");
      return Outcome::Stopped;
    }
    const kernels::ResampleFrame frame = frameOf(k, dims.width, dims.height);
    mcVisit(input.primType(), [&](auto zero) {
      using T = decltype(zero);
      if constexpr (std::is_integral_v<T>)
        kernels::resampleLabelRows(frame, reinterpret_cast<const T*>(source.data()), static_cast<T*>(target),
                                   0, m_height);
    });
    if (!endWrite(output, k)) return Outcome::Stopped;
    showProgress(m_input.getDims().slices + k, m_height);
    if (workArea->wasInterrupted(1)) return Outcome::Stopped;
  }
  return Outcome::Done;
}
