#include "GrowingVolume.h"

#include "Console.h"
#include "Failure.h"
#include "OutputFiles.h"
#include "PartialOutput.h"
#include "Stopwatch.h"
#include "io/Volume.h"

#include <filesystem>
#include <memory>
#include <utility>

namespace cli {
namespace {

/// What the writing of a volume asks of it.
struct Demand {
  PartialOutput& partial;
  double seconds = 0.0;
  bool failed = false;
};

/// The voxels of a volume, with an eye on who reads them.
class WatchedVoxels : public ZxReadOnlyVoxelSource {
public:
  WatchedVoxels(McHandle<ZxSpatialData> data, Demand& demand)
    : m_data(std::move(data)), m_lattice(*m_data->getLattice()), m_demand(demand)
  {
  }
  bool readSlice(int k, void* dst) override
  {
    // Who asks for another slice has written the one before.
    if (m_hasRead) m_demand.partial.sliceDone();
    m_hasRead = true;
    const Stopwatch watch;
    const bool whole = m_lattice.readSlice(k, dst);
    m_demand.seconds += watch.seconds();
    m_demand.failed = m_demand.failed || !whole;
    return whole;
  }
  bool readBox(const ZxBox3i& box, void* dst) override { return m_lattice.readBox(box, dst); }

private:
  McHandle<ZxSpatialData> m_data;
  ZxLattice& m_lattice;
  Demand& m_demand;
  bool m_hasRead = false;
};

/// The same data with watched voxels.
McHandle<ZxSpatialData> watched(const McHandle<ZxSpatialData>& data, Demand& demand)
{
  const ZxLattice& lattice = *data->getLattice();
  auto voxels = std::make_unique<WatchedVoxels>(data, demand);
  McHandle<ZxSpatialData> result;
  if (dynamic_cast<const ZxLabelLattice*>(&lattice))
    result =
        mcMake<ZxUniformLabelField3>(std::make_unique<ZxLabelLattice3>(lattice.shape(), std::move(voxels)));
  else
    result = ZxField3::create(std::make_unique<ZxLattice3>(lattice.shape(), std::move(voxels)));
  result->getLattice()->setBoundingBox(lattice.getBoundingBox());
  result->parameters() = data->parameters();
  result->setLabel(data->getLabel());
  return result;
}

} // namespace

double growVolume(OutputFiles& files, PartialOutput& partial, const char* name, const std::string& path,
                  const McHandle<ZxSpatialData>& data, Console& console)
{
  Demand demand{partial};
  const McHandle<ZxSpatialData> volume = watched(data, demand);
  try {
    const std::filesystem::path folder = partial.growingFolder(name, path);
    if (!folder.empty())
      files.grow(path, folder, [&](const std::string& grown) {
        if (io::continueVolume(*volume, grown) > 0) partial.sliceDone();
      });
    else
      files.write(path, [&](const std::string& staged) { io::writeVolume(*volume, staged); });
  } catch (const std::exception& error) {
    // What could not be read has been said better by those who tried.
    if (!demand.failed || ZxWorkArea::getTheWorkArea()->wasInterrupted()) throw;
    throw Failure(console.reason(error.what()));
  }
  return demand.seconds;
}

} // namespace cli
