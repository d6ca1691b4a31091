#include <tbb/parallel_for.h>

#include "PhantomCommand.h"

#include "Console.h"
#include "Failure.h"
#include "OutputFiles.h"
#include "TransformTable.h"
#include "io/Volume.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <vector>

namespace cli {
namespace {

/// Slices that are rendered side by side before the next look at progress and stop: a few, and no more than
/// fit into a quarter of a gigabyte.
int batchSize(const ZxLatticeShape& shape)
{
  const std::size_t fit = (std::size_t{256} << 20) / shape.sliceBytes();
  return static_cast<int>(std::clamp<std::size_t>(fit, 1, 8));
}

ZxLatticeShape shapeOf(const samples::PhantomOptions& options)
{
  ZxLatticeShape shape;
  shape.dims = {options.size, options.size, options.slices};
  return shape;
}

std::vector<ZxAlignTransform> truthOf(const samples::Phantom& phantom)
{
  std::vector<ZxAlignTransform> truth;
  for (const samples::PhantomTransform& t : phantom.truth())
    truth.push_back({t.tx, t.ty, t.angleDegrees, t.flip});
  return truth;
}

void reportProgress(int done, int slices)
{
  ZxWorkArea& area = *ZxWorkArea::getTheWorkArea();
  area.setProgressFraction(static_cast<float>(done) / static_cast<float>(slices));
  if (area.wasInterrupted(1))
    throw Stopped("Stopped after " + std::to_string(done) + " of " + std::to_string(slices) +
                  " slices; nothing was written.");
}

} // namespace

void PhantomCommand::declare(CLI::App& options)
{
  options.add_option("OUTPUT", m_output, "Name of the volume; its ending chooses the format")
      ->required()
      ->type_name("");
  options.add_option("--slices", m_options.slices, "Number of slices")->capture_default_str()->type_name("N");
  options.add_option("--size", m_options.size, "Width and height of a slice in pixels")
      ->capture_default_str()
      ->type_name("PIXELS");
  options.add_option("--seed", m_options.seed, "Chooses the tissue, the displacements and the noise")
      ->capture_default_str()
      ->type_name("N");
  options
      .add_option("--shift", m_options.maxShift,
                  "Largest displacement of a slice along x and along y in pixels")
      ->capture_default_str()
      ->type_name("PIXELS");
  options.add_option("--angle", m_options.maxAngle, "Largest rotation of a slice in degrees")
      ->capture_default_str()
      ->type_name("DEGREES");
  options
      .add_option("--noise", m_options.noise,
                  "Standard deviation of the noise of a pixel in grey levels (of 256)")
      ->capture_default_str()
      ->type_name("LEVELS");
  options.add_option("--truth", m_truth, "Also write the true transforms, a table like that of 'transforms'")
      ->type_name("FILE.csv");
}

void PhantomCommand::run(Console& console)
{
  const std::string refusal = samples::check(m_options);
  if (!refusal.empty()) throw Failure(refusal);
  OutputFiles files;
  files.announceVolume(m_output, shapeOf(m_options));
  if (!m_truth.empty()) files.announceFile(m_truth);

  const WorkingPhase phase("Making " + m_output);
  const samples::Phantom phantom(m_options);
  const McHandle<ZxField3> field = renderPhantom(phantom);
  files.write(m_output, [&](const std::string& path) { io::writeVolume(*field, path); });
  if (!m_truth.empty())
    files.write(m_truth, [&](const std::string& path) {
      writeTransformTable(truthOf(phantom), m_options.size, m_options.size, path);
    });
  files.commit();
  console.summary("Wrote " + m_output + (m_truth.empty() ? "." : " and " + m_truth + "."));
}

McHandle<ZxField3> renderPhantom(const samples::Phantom& phantom)
{
  const ZxLatticeShape shape = shapeOf(phantom.options());
  std::unique_ptr<ZxLattice3> lattice = ZxLattice3::create(shape);
  if (!lattice)
    throw Failure("The phantom needs " + std::to_string(shape.bytes() >> 20) +
                  " MB of memory, more than is free.");
  const int most = batchSize(shape);
  std::vector<std::vector<std::uint8_t>> batch(static_cast<std::size_t>(most),
                                               std::vector<std::uint8_t>(shape.sliceBytes()));
  for (int first = 0; first < shape.dims.slices; first += most) {
    reportProgress(first, shape.dims.slices);
    const int count = std::min(most, shape.dims.slices - first);
    tbb::parallel_for(
        0, count, [&](int i) { phantom.renderSlice(first + i, batch[static_cast<std::size_t>(i)].data()); });
    for (int i = 0; i < count; ++i) {
      const std::vector<std::uint8_t>& slice = batch[static_cast<std::size_t>(i)];
      std::memcpy(lattice->beginWrite(first + i), slice.data(), slice.size());
      lattice->endWrite(first + i);
    }
  }
  return ZxField3::create(std::move(lattice));
}

} // namespace cli
