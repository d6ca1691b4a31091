#include "ZxAlignResampler.h"

#include "ResampledVoxels.h"
#include "zx/ZxMessage.h"
#include "zx/ZxWorkArea.h"
#include "zxalign/ZxAlignData.h"
#include "zxalign/ZxAlignSlices.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>

namespace {

ZxMessage* msg() { return ZxMessage::getTheMsg(); }

bool endWrite(ZxLattice& output, int k)
{
  if (output.endWrite(k)) return true;
  msg()->printf("Slice %d of the result cannot be written.", k);
  return false;
}

} // namespace

ZxAlignResampler::ZxAlignResampler(ZxAlignSlices& module)
  : m_module(module), m_data(module.sliceData()), m_inputData(m_data.getSpatialData()),
    m_input(*m_data.getLattice()), m_inputIsLabels(holdsLabels(m_input)), m_how(module, bordersOf())
{
}

OutputBorders ZxAlignResampler::bordersOf() const
{
  const ZxAlignSettings& settings = m_module.alignSettings();
  if (!settings.automaticOrigin)
    return centredBorders(m_input.getDims(), settings.outputWidth, settings.outputHeight);
  int x[2], y[2];
  m_module.calculateOrigin(x, y, 0, 0);
  return {x[0], x[1], y[0], y[1]};
}

void ZxAlignResampler::run(bool reuse)
{
  const McHandle<ZxSpatialData> result = obtainResult(reuse);
  if (!result) return;
  describeResult(*result);
  const ZxWorkingPhase phase("Resampling");
  const Outcome outcome = resampleImage(*result->getLattice());
  result->touch(); // Who shows it may have looked at slices that were not written yet.
  if (outcome == Outcome::Stopped) return;
  inheritParameters(*result);
  m_module.setResult(0, result.get());
  if (m_module.portLabelField.isConnected()) resampleLabels(reuse);
}

McHandle<ZxSpatialData> ZxAlignResampler::volumeOnDemand()
{
  if (m_how.width() < 1 || m_how.height() < 1) return {};
  McHandle<ZxSpatialData> result = createResult(std::make_unique<ResampledVoxels>(
      m_inputData, m_how, ResampledVoxels::Kind::Image, m_input.getDims().slices));
  describeResult(*result);
  inheritParameters(*result);
  return result;
}

McHandle<ZxSpatialData> ZxAlignResampler::labelsOnDemand()
{
  const McHandle<ZxSpatialData> input = labelField();
  if (!input) return {};
  McHandle<ZxUniformLabelField3> result =
      createLabels(*input, std::make_unique<ResampledVoxels>(input, m_how, ResampledVoxels::Kind::Labels,
                                                             m_input.getDims().slices));
  describeLabels(*input, *result);
  return result;
}

McHandle<ZxSpatialData> ZxAlignResampler::obtainResult(bool reuse)
{
  if (reuse) {
    bool failed = false;
    McHandle<ZxSpatialData> existing = existingResult(failed);
    if (existing || failed) return existing;
  }
  McHandle<ZxSpatialData> result = createResult(ZxLattice::createMemory(resultShape()));
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
  } else if (lattice->getDims() != resultShape().dims || lattice->primType() != m_input.primType() ||
             holdsLabels(*lattice) != m_inputIsLabels) {
    msg()->printf("Previous result has different dimensions. Cannot reuse it.");
    failed = false;
  } else {
    failed = false;
    lattice->setBoundingBox(
        outputBox(m_input.getDims(), m_input.getBoundingBox(), m_how.width(), m_how.height()));
    return McHandle<ZxSpatialData>(result);
  }
  return {};
}

ZxLatticeShape ZxAlignResampler::resultShape() const
{
  ZxLatticeShape shape = m_input.shape();
  shape.dims.width = m_how.width();
  shape.dims.height = m_how.height();
  return shape;
}

McHandle<ZxSpatialData> ZxAlignResampler::createResult(std::unique_ptr<ZxVoxelSource> voxels)
{
  if (!voxels) return {};
  const ZxBox3f box = outputBox(m_input.getDims(), m_input.getBoundingBox(), m_how.width(), m_how.height());
  if (m_inputIsLabels) {
    auto labels = std::make_unique<ZxLabelLattice3>(resultShape(), std::move(voxels));
    labels->setBoundingBox(box);
    return McHandle<ZxSpatialData>(new ZxUniformLabelField3(std::move(labels)));
  }
  auto lattice = std::make_unique<ZxLattice3>(resultShape(), std::move(voxels));
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

void ZxAlignResampler::inheritParameters(ZxSpatialData& result)
{
  if (!m_inputIsLabels) return;
  result.parameters() = *m_data.getParameters();
  storeGeometry(*m_data.getSpatialData(), result.parameters());
}

void ZxAlignResampler::storeGeometry(const ZxSpatialData& input, ZxParamBundle& parameters) const
{
  // The output's first voxel lies a border before the input's.
  ZxFileGeometry geometry = ZxFileGeometry::of(input);
  geometry.origin[0] -= m_how.borders().left * geometry.voxelSize[0];
  geometry.origin[1] -= m_how.borders().top * geometry.voxelSize[1];
  geometry.store(parameters);
}

void ZxAlignResampler::showProgress(int k, int row)
{
  const double rows = static_cast<double>(k) * m_how.height() + row;
  // The slices of the labels follow those of the image.
  const int passes = m_module.portLabelField.isConnected() ? 2 : 1;
  const double all = static_cast<double>(m_input.getDims().slices) * passes * m_how.height();
  ZxWorkArea::getTheWorkArea()->setProgressFraction(static_cast<float>(rows / all));
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
  const std::vector<float> background =
      m_how.background(k, source, m_input.shape(), SliceResampling::Tell::Yes);
  const bool whole =
      m_how.image(m_how.frame(k, m_input.getDims()), m_input, source, background, target, [&](int rows) {
        showProgress(k, rows);
        return !ZxWorkArea::getTheWorkArea()->wasInterrupted(1);
      });
  return whole && endWrite(output, k) ? Outcome::Done : Outcome::Stopped;
}

McHandle<ZxSpatialData> ZxAlignResampler::labelField() const
{
  McHandle<ZxSpatialData> input(m_module.portLabelField.getSpatialData()); // Pending events may drop it.
  if (input && dynamic_cast<ZxLabelLattice*>(input->getLattice())) return input;
  msg()->printf("No input LabelLattice or no output LabelLattice.");
  return {};
}

void ZxAlignResampler::resampleLabels(bool reuse)
{
  const McHandle<ZxSpatialData> input = labelField();
  if (!input) return;
  const McHandle<ZxUniformLabelField3> result = obtainLabels(*input, reuse);
  if (!result) return;
  ZxWorkArea::getTheWorkArea()->setProgressText("Realigning Labels...");
  describeLabels(*input, *result);
  m_module.setResult(1, result.get());
  const Outcome outcome = resampleLabelSlices(*input->getLattice(), *result->getLattice());
  result->touch();
  if (outcome == Outcome::Stopped) return;
  m_module.m_appliedLabelSlices = m_module.m_slices;
}

void ZxAlignResampler::describeLabels(const ZxSpatialData& input, ZxSpatialData& result)
{
  ZxParamBundle& parameters = result.parameters();
  m_module.saveTransform(parameters, m_module.m_slices);
  parameters.merge(input.parameters());
  storeGeometry(*m_inputData, parameters); // Labels lie where the voxels lie that they name.
  result.setLabel(ZxData::composeLabel(input.getLabel(), "align"));
  parameters.setNum("AlignIsApplied", 1);
  result.touch();
}

ZxLatticeShape ZxAlignResampler::labelShape(const ZxSpatialData& input) const
{
  return {resultShape().dims, 1, input.getLattice()->primType(), ZxCoordType::Uniform};
}

McHandle<ZxUniformLabelField3> ZxAlignResampler::obtainLabels(const ZxSpatialData& input, bool reuse)
{
  const ZxLatticeShape shape = labelShape(input);
  if (reuse) {
    ZxData* data = m_module.getResult(1);
    auto* result = dynamic_cast<ZxUniformLabelField3*>(data);
    if (!result) {
      msg()->printf("No input LabelLattice or no output LabelLattice.");
      return {};
    }
    ZxLattice& existing = *result->getLattice();
    if (existing.getDims() == shape.dims && existing.primType() == shape.primType) {
      existing.setBoundingBox(
          outputBox(m_input.getDims(), m_input.getBoundingBox(), m_how.width(), m_how.height()));
      return McHandle<ZxUniformLabelField3>(result);
    }
    msg()->printf("Previous result has different dimensions. Cannot reuse it.");
  }
  McHandle<ZxUniformLabelField3> result = createLabels(input, ZxLattice::createMemory(shape));
  if (!result) msg()->printf("Error creating result Label Lattice.");
  return result;
}

McHandle<ZxUniformLabelField3> ZxAlignResampler::createLabels(const ZxSpatialData& input,
                                                              std::unique_ptr<ZxVoxelSource> voxels)
{
  if (!voxels) return {};
  auto lattice = std::make_unique<ZxLabelLattice3>(labelShape(input), std::move(voxels));
  lattice->setBoundingBox(
      outputBox(m_input.getDims(), m_input.getBoundingBox(), m_how.width(), m_how.height()));
  return mcMake<ZxUniformLabelField3>(std::move(lattice));
}

ZxAlignResampler::Outcome ZxAlignResampler::resampleLabelSlices(ZxLattice& input, ZxLattice& output)
{
  ZxWorkArea* workArea = ZxWorkArea::getTheWorkArea();
  const ZxDims& dims = input.getDims();
  // The label field may be one that was connected after the input and has fewer slices.
  const int slices = std::min(dims.slices, m_input.getDims().slices);
  std::vector<unsigned char> source;
  try {
    source.resize(input.shape().sliceBytes());
  } catch (const std::bad_alloc&) {
    msg()->memError(input.shape().sliceBytes());
    return Outcome::Stopped;
  }
  for (int k = 0; k < slices; ++k) {
    workArea->setProgressText("Resampling slice %d of %d", k + 1, slices);
    void* target = output.beginWrite(k);
    if (!target || !input.readSlice(k, source.data())) {
      msg()->printf("Slice %d of the labels cannot be %s.", k, target ? "read" : "written");
      return Outcome::Stopped;
    }
    SliceResampling::labels(m_how.frame(k, dims), input.primType(), source.data(), target);
    if (!endWrite(output, k)) return Outcome::Stopped;
    showProgress(m_input.getDims().slices + k, m_how.height());
    if (workArea->wasInterrupted(1)) return Outcome::Stopped;
  }
  return Outcome::Done;
}
