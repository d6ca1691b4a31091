#include "AlignCommand.h"

#include "AlignModule.h"
#include "Console.h"
#include "Failure.h"
#include "GrowingVolume.h"
#include "MethodNames.h"
#include "OutputFiles.h"
#include "PartialOutput.h"
#include "Picture.h"
#include "Stopwatch.h"
#include "StoredAlignment.h"
#include "Text.h"
#include "TransformTable.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>

namespace cli {
namespace {

constexpr std::string_view kRobust = "robust"; // the one that looks at more neighbours than one

/// One of the two values of --window.
float windowValue(const std::string& text)
{
  const std::optional<float> value = parseFloat(text);
  if (!value) throw Failure("--window takes two numbers; \"" + text + "\" is none.");
  return *value;
}

double meanQuality(const std::vector<ZxAlignPairResult>& pairs, double ZxAlignPairResult::*quality)
{
  double sum = 0.0;
  for (const ZxAlignPairResult& pair : pairs) sum += pair.*quality;
  return pairs.empty() ? 0.0 : sum / static_cast<double>(pairs.size());
}

std::string percent(double quality) { return fixed(quality * 100.0, 2) + " %"; }

std::string summaryOf(const AlignReport& report)
{
  const auto left = std::count_if(report.pairs.begin(), report.pairs.end(),
                                  [](const ZxAlignPairResult& pair) { return !pair.changed; });
  return std::to_string(report.pairs.size()) + (report.pairs.size() == 1 ? " pair" : " pairs") + " aligned" +
         (report.pairsBefore ? " (" + std::to_string(report.pairsBefore) + " of them before the stop)" : "") +
         " in " + fixed(report.seconds.aligning, 1) + " s, mean quality " +
         percent(meanQuality(report.pairs, &ZxAlignPairResult::qualityBefore)) + " before, " +
         percent(meanQuality(report.pairs, &ZxAlignPairResult::qualityAfter)) + " after." +
         (left ? " " + std::to_string(left) + " of them were left as they are." : "");
}

/// The settings of the module as a table for the help.
std::string settingsTable(const ZxAlignControl& control)
{
  std::string text;
  for (const ZxAlignSetting& setting : control.settings()) {
    const std::string unit = *setting.unit ? std::string(" ") + setting.unit : "";
    const std::string standard = *setting.defaultValue ? setting.defaultValue : "from the input";
    const std::string help =
        std::string(setting.help) + " Values: " + setting.range + unit + "; default: " + standard + ".";
    text.append("  ").append(setting.name).append("\n      ").append(wrapped(help, 6)).append("\n");
  }
  return text;
}

std::string helpOnMethods()
{
  Console console(Console::Verbosity::Quiet);
  AlignModule module(console);
  return "Methods (--method): " + methodList(module.control()) + "\n\nSettings (--set NAME=VALUE):\n" +
         settingsTable(module.control()) +
         "\nSlices are counted from 0. Each is aligned to its neighbour, from the reference slice upwards "
         "and\n"
         "then downwards. Ctrl+C stops at once; what is done is kept in OUTPUT.partial for --resume.";
}

/// True when a method compares a slice with more than its neighbour: what it knows of the slices before is
/// gone with the run that has found it. The methods of the package itself never do, whatever that setting is.
bool looksBeyondPairs(const ZxAlignControl& control, const std::string& method)
{
  return !isBuiltIn(method) && parseInteger(control.getSetting("neighbours")).value_or(1) > 1;
}

/// True when these are the first pairs of an alignment: from the reference slice upwards, then downwards.
bool beginsAlignment(const std::vector<ZxAlignPairResult>& pairs, int reference, int slices)
{
  int slice = reference, side = +1;
  return std::all_of(pairs.begin(), pairs.end(), [&](const ZxAlignPairResult& result) {
    if (side > 0 && slice == slices - 1) slice = reference, side = -1;
    slice += side;
    return slice >= 0 && result.pair == ZxAlignPair{slice, slice - side, side};
  });
}

} // namespace

void AlignCommand::declare(CLI::App& options)
{
  m_input.declare(options);
  options
      .add_option(
          "-o,--output", m_output,
          "The aligned volume: .tif .tiff .nrrd .nhdr .mrc .mha .mhd .nii .nii.gz, or one file a slice "
          "with a number pattern (aligned_%04d.tif) or a name that ends in /")
      ->required()
      ->type_name("FILE");
  declareSearch(options);
  m_resample.declare(options);
  declareOutputs(options);
  options.footer([] {
    try {
      return helpOnMethods();
    } catch (const Failure& failure) {
      return std::string(failure.what());
    }
  });
}

void AlignCommand::declareSearch(CLI::App& options)
{
  options
      .add_option("--method", m_method,
                  "Automatic method: short name, registered name or id (default: least-squares)")
      ->type_name("METHOD");
  m_plugIns.declare(options);
  options
      .add_option("--set", m_settings, "Change a setting of the module, see the list below; can be repeated")
      ->expected(1)
      ->take_all()
      ->type_name("NAME=VALUE");
  options
      .add_option("--reference", m_reference,
                  "Slice that stays where it is (default: the one below the middle)")
      ->type_name("N");
  options
      .add_option(
          "--scale", m_scaleText,
          "Compare slices reduced by whole blocks of pixels, and apply the transforms at full size: 1/4 "
          "or 0.25 for blocks of 4 x 4; steps in pixels are those of the reduced slices (default: 1)")
      ->type_name("F");
  options.add_flag("--no-rotation", m_noRotation, "Shift slices only (the same as --set rotation=off)");
  options.add_option("--iterations", m_iterations, "The same as --set iterations=N, see below")
      ->type_name("N");
  options
      .add_option("--translation-step", m_translationStep,
                  "The same as --set translation-step=PIXELS, see below")
      ->type_name("PIXELS");
  options.add_option("--rotation-step", m_rotationStep, "The same as --set rotation-step=DEGREES, see below")
      ->type_name("DEGREES");
  options.add_option("--levels", m_levels, "The same as --set levels=N, see below")->type_name("N");
  options
      .add_option("--neighbours", m_neighbours,
                  "For the method robust: the same as --set neighbours=K, see below")
      ->type_name("K");
  options
      .add_option("--window", m_window,
                  "Grey values that count as black and white in the comparison of slices (default: the "
                  "range of the input)")
      ->expected(2)
      ->type_name("MIN MAX");
  options
      .add_option("--mask", m_mask,
                  "A label field of the size of the input: where it is 0 the input counts as black in the "
                  "comparison of slices")
      ->type_name("FILE");
  options
      .add_option("--start-from", m_startFrom,
                  "Start from the alignment stored in a volume, or from a table of the command transforms "
                  "(default: the alignment stored in the input, if there is one)")
      ->type_name("FILE");
  options
      .add_option("--landmarks", m_landmarks,
                  "Landmarks for the method landmarks: a table slice,index,x,y in pixels that names every "
                  "index on every slice (default: those stored in the input)")
      ->type_name("FILE.csv");
}

void AlignCommand::declareOutputs(CLI::App& options)
{
  options.add_flag("--transforms-only", m_transformsOnly,
                   "Do not resample: the output is the table of transforms when its name ends in .csv, else "
                   "the input with the alignment stored in it");
  options.add_flag("--resume", m_resume,
                   "Go on after the last pair and the last slice of a stopped run, from OUTPUT.partial");
  options.add_option("--report", m_report, "Write a report of every pair as JSON")->type_name("FILE.json");
  options
      .add_option("--picture", m_picture,
                  "Paint the stack cut along x and y, before and after, and the quality of every pair")
      ->type_name("FILE.png");
  options
      .add_option("--truth", m_truth,
                  "Compare the result with a table of the true transforms: distance in pixels between "
                  "neighbours, also in the report")
      ->type_name("FILE.csv");
}

bool AlignCommand::writesTable() const { return m_transformsOnly && hasEnding(m_output, ".csv"); }

void AlignCommand::check(const std::string& method, const io::VolumeInfo& info) const
{
  const ZxDims& dims = info.shape.dims;
  requireMemory(info.shape, "The");
  requireMemory(m_resample.outputShape(info.shape), "Aligned");
  if (!m_neighbours.empty() && method != kRobust)
    throw Failure("--neighbours is for the method robust, and the method here is " + method +
                  ": add --method robust, or leave out --neighbours.");
  if (m_transformsOnly && m_resample.hasLabels())
    throw Failure("--labels needs the resampling that --transforms-only leaves out.");
  if (!m_picture.empty() && !hasEnding(m_picture, ".png"))
    throw Failure("The picture is a PNG: its name must end in .png, which " + m_picture + " does not.");
  // What is too small for any reference is refused by the module.
  if (m_reference && (*m_reference < 0 || (dims.slices > 1 && *m_reference >= dims.slices)))
    throw Failure("There is no slice " + std::to_string(*m_reference) + " to be the reference; " +
                  m_input.name() + " has the slices 0 to " + std::to_string(dims.slices - 1) + ".");
  if (!m_mask.empty()) requireSameDims("mask", m_mask, io::readInfo({m_mask}).shape.dims, m_input, dims);
}

void AlignCommand::announce(const io::VolumeInfo& info, OutputFiles& files) const
{
  files.protect(m_input.paths(), OutputFiles::Input::Replaceable);
  for (const std::string* path : {&m_mask, &m_startFrom, &m_landmarks, &m_truth})
    if (!path->empty()) files.protect({*path}, OutputFiles::Input::Protected);
  if (m_resample.hasLabels()) files.protect({m_resample.labels()}, OutputFiles::Input::Replaceable);

  if (writesTable())
    files.announceFile(m_output);
  else
    files.announceVolume(m_output, m_transformsOnly ? info.shape : m_resample.outputShape(info.shape));
  files.announceFolder(PartialOutput::nameFor(m_output));
  m_resample.announceLabels(m_input, info.shape, files);
  for (const std::string* path : {&m_report, &m_picture})
    if (!path->empty()) files.announceFile(*path);
}

AlignCommand::Stack AlignCommand::open(const io::VolumeInfo& info) const
{
  Stack stack{info, m_input.open(), {}, {}, {}};
  stack.compared = stack.volume;
  if (m_mask.empty()) return stack;
  const WorkingPhase phase("Reading " + m_mask);
  stack.mask = io::openLabels({m_mask});
  return stack;
}

void AlignCommand::connect(AlignModule& module, Stack& stack, Console& console)
{
  const ZxParamBundle& parameters = stack.volume->parameters();
  if (m_startFrom.empty() && hasAlignment(parameters))
    console.remark(isAligned(parameters)
                       ? m_input.name() + " has been aligned before; its slices start where they are."
                       : "The alignment stored in " + m_input.name() + " is the start.");
  using Window = AlignModule::Window;
  const WorkingPhase phase("Reading " + m_input.name());
  module.connectInput(*stack.volume, m_window.empty() && m_scale.isOne() ? Window::OfInput : Window::Later);
  setStart(module, stack.info);
  if (!m_landmarks.empty()) {
    const std::string problem = module.control().setLandmarksFrom(m_landmarks);
    if (!problem.empty()) throw io::Error(problem);
  }
  if (!m_scale.isOne()) connectReduced(module, stack, console);
  if (stack.mask) connectMask(module, stack);
  setOptions(module, stack.info.shape, console);
  m_resample.prepare(module, stack.info.shape);
}

void AlignCommand::connectReduced(AlignModule& module, Stack& stack, Console& console) const
{
  ZxAlignControl& control = module.control();
  const ZxDims& full = stack.info.shape.dims;
  std::vector<ZxAlignTransform> transforms = control.transforms();
  stack.landmarks = control.landmarks();
  stack.compared =
      McHandle<ZxField3>(dynamic_cast<ZxField3*>(control.reduced(stack.volume, m_scale.reduction()).get()));
  if (!stack.compared)
    throw Failure("--scale " + m_scale.text() + " leaves nothing of slices of " + std::to_string(full.width) +
                  " x " + std::to_string(full.height) + " pixels.");
  // What is stored refers to slices of full size.
  stack.compared->parameters() = stack.volume->parameters();
  for (const char* name : {"AlignTransform", "AlignPoints", "AlignIsApplied"})
    stack.compared->parameters().remove(name);
  module.connectInput(*stack.compared,
                      m_window.empty() ? AlignModule::Window::OfInput : AlignModule::Window::Later);
  const ZxDims& reduced = stack.compared->getLattice()->getDims();
  for (ZxAlignTransform& transform : transforms) transform = m_scale.toReduced(transform, full, reduced);
  control.setTransforms(transforms);
  std::vector<std::vector<ZxAlignPoint>> landmarks = stack.landmarks;
  for (std::vector<ZxAlignPoint>& points : landmarks)
    for (ZxAlignPoint& point : points) point = m_scale.toReduced(point);
  if (!control.setLandmarks(landmarks))
    console.remark("The landmarks stored in " + m_input.name() +
                   " are not as many on every slice; they are not used.");
}

void AlignCommand::connectMask(AlignModule& module, Stack& stack) const
{
  if (!m_scale.isOne()) stack.mask = module.control().reduced(stack.mask, m_scale.reduction());
  module.connect("mask", *stack.mask);
}

void AlignCommand::applyAtFullSize(AlignModule& module, const Stack& stack, AlignReport& report) const
{
  if (m_scale.isOne()) return;
  ZxAlignControl& control = module.control();
  const ZxDims &full = stack.info.shape.dims, &reduced = stack.compared->getLattice()->getDims();
  for (ZxAlignTransform& transform : report.transforms) transform = m_scale.toFull(transform, reduced, full);
  for (ZxAlignPairResult& pair : report.pairs) pair.transform = m_scale.toFull(pair.transform, reduced, full);
  const std::string rotationStep = control.getSetting("rotation-step");
  const float min = module.windowMin(), max = module.windowMax();
  module.connectInput(*stack.volume, AlignModule::Window::Later);
  control.setTransforms(report.transforms);
  control.setLandmarks(stack.landmarks);
  passConfidence(stack.compared->parameters(), stack.volume->parameters());
  // What the slices were compared with, for the report and the picture.
  module.set("rotation-step", rotationStep);
  module.setWindow(min, max);
}

void AlignCommand::setStart(AlignModule& module, const io::VolumeInfo& info) const
{
  if (m_startFrom.empty()) return;
  if (hasEnding(m_startFrom, ".csv")) {
    const std::vector<ZxAlignTransform> start =
        readTransformTable(m_startFrom, info.shape.dims.width, info.shape.dims.height);
    if (!module.control().setTransforms(start))
      throw Failure("The table " + m_startFrom + " has " + std::to_string(start.size()) + " slices, but " +
                    m_input.name() + " has " + std::to_string(info.shape.dims.slices) + ".");
    return;
  }
  const io::VolumeInfo start = io::readInfo({m_startFrom});
  if (!hasAlignment(start.parameters))
    throw Failure("The volume " + m_startFrom + " carries no alignment to start from.");
  const McHandle<ZxField3> carrier = alignmentCarrier(start);
  requireSameDims("alignment of", m_startFrom, carrier->getLattice()->getDims(), m_input, info.shape.dims);
  module.connect("reference", *carrier);
}

void AlignCommand::setOptions(AlignModule& module, const ZxLatticeShape& shape, Console& console) const
{
  for (const std::string& setting : m_settings) {
    const std::size_t equals = setting.find('=');
    if (equals == std::string::npos) throw Failure("--set takes NAME=VALUE, not \"" + setting + "\".");
    module.set(setting.substr(0, equals), setting.substr(equals + 1));
  }
  if (m_noRotation) module.set("rotation", "off");
  const std::pair<const char*, const std::string&> named[] = {{"iterations", m_iterations},
                                                              {"translation-step", m_translationStep},
                                                              {"rotation-step", m_rotationStep},
                                                              {"levels", m_levels},
                                                              {"neighbours", m_neighbours}};
  for (const auto& [name, value] : named)
    if (!value.empty()) module.set(name, value);
  if (m_window.empty()) return;
  if (shape.numDataVars == 4) console.remark("--window has no effect on colour.");
  module.setWindow(windowValue(m_window[0]), windowValue(m_window[1]));
}

RunFacts AlignCommand::facts(AlignModule& module, const io::VolumeInfo& info, const AlignReport& report) const
{
  RunFacts facts = {
      {"the command", "align"}, {"the version", ZXALIGN_VERSION}, {"the method", report.method}};
  m_input.addFacts(info, facts);
  facts.push_back({"--scale", report.scale});
  for (const ZxAlignSetting& setting : module.control().settings())
    facts.push_back({setting.name, module.control().getSetting(setting.name)});
  facts.push_back({"the reference slice", std::to_string(report.reference)});
  facts.push_back({"the window", shortest(module.windowMin()) + " to " + shortest(module.windowMax())});
  facts.push_back({"--transforms-only", m_transformsOnly ? "on" : "off"});
  const std::pair<const char*, const std::string&> files[] = {
      {"--mask", m_mask}, {"--start-from", m_startFrom}, {"--landmarks", m_landmarks}};
  for (const auto& [option, path] : files) {
    facts.push_back({option, pathFact(path)});
    const bool isTable = path.empty() || hasEnding(path, ".csv");
    addFileFacts(isTable ? std::vector<std::string>{path} : io::readInfo({path}).files, facts);
  }
  for (const ZxAlignPlugIn& plugIn : module.control().plugIns())
    for (const int method : plugIn.methods)
      if (methodName(module.control(), method) == report.method) addFileFacts({plugIn.path}, facts);
  m_resample.addFacts(facts);
  return facts;
}

int AlignCommand::takeUp(AlignModule& module, const Stack& stack, const AlignReport& report,
                         PartialOutput& partial, Console& console) const
{
  ZxAlignControl& control = module.control();
  const RunState& state = partial.state();
  const auto pairs = static_cast<int>(state.pairs.size());
  if (pairs == 0) return 0;
  const Failure damage("What is kept of the stopped run in " + PartialOutput::nameFor(m_output) +
                       " is damaged; leave out --resume to start anew.");
  if (!beginsAlignment(state.pairs, report.reference, control.numSlices())) throw damage;
  const bool isWhole = pairs == control.numSlices() - 1;
  if (!isWhole && (!state.pairsAlone || looksBeyondPairs(control, report.method))) {
    console.remark("The method looks at more than a pair at a time: all pairs are aligned again.");
    partial.forgetPairs();
    return 0;
  }
  if (!control.setTransforms(state.transforms)) throw damage;
  stack.compared->parameters() = state.parameters;
  if (state.changesParameters) stack.compared->touch();
  return pairs;
}

void AlignCommand::align(AlignModule& module, int method, const Stack& stack, AlignReport& report,
                         PartialOutput& partial, Console& console) const
{
  ZxAlignControl& control = module.control();
  const int total = control.numSlices() - 1;
  const Stopwatch watch;
  const int before = report.pairsBefore = takeUp(module, stack, report, partial, console);
  const int done =
      before + control.alignRest(before, method, report.reference, [&](const ZxAlignPairResult& pair) {
        partial.pairDone(pair, control.transforms(), *stack.compared);
      });
  report.seconds.aligning = watch.seconds();
  partial.alignmentDone();
  if (ZxWorkArea::getTheWorkArea()->wasInterrupted())
    throw Stopped("Stopped after " + std::to_string(done) + " of " + std::to_string(total) + " pairs");
  if (done < total) throw Failure(console.reason("The stack could not be aligned."));
  report.pairs = partial.state().pairs;
  report.transforms = control.transforms();
  for (const ZxAlignPairResult& pair : report.pairs)
    report.confidences.push_back(confidenceOf(stack.compared->parameters(), pair.pair.editable));
  remarkOnParameters(stack, console);
  console.remarks();
}

void AlignCommand::remarkOnParameters(const Stack& stack, Console& console) const
{
  if (m_scale.isOne() && stack.volume->isUnsaved())
    console.remark("The method has changed what is stored with " + m_input.name() +
                   " (an alignment stored there is gone); the file itself stays as it is unless it is the "
                   "output.");
}

void AlignCommand::compareWithTruthTable(AlignReport& report) const
{
  if (m_truth.empty()) return;
  const std::vector<ZxAlignTransform> truth =
      readTransformTable(m_truth, report.dimensions.width, report.dimensions.height);
  if (truth.size() != report.transforms.size())
    throw Failure("The table " + m_truth + " has " + std::to_string(truth.size()) + " slices, but " +
                  m_input.name() + " has " + std::to_string(report.transforms.size()) + ".");
  report.truth = compareWithTruth(report.transforms, truth, report.dimensions.width, report.dimensions.height,
                                  report.reference);
}

std::vector<std::pair<std::string, std::string>> AlignCommand::effectiveOptions(AlignModule& module) const
{
  std::vector<std::pair<std::string, std::string>> options;
  for (const ZxAlignSetting& setting : module.control().settings())
    options.emplace_back(setting.name, module.control().getSetting(setting.name));
  options.emplace_back("window", shortest(module.windowMin()) + " " + shortest(module.windowMax()));
  options.emplace_back("interpolation", m_resample.interpolation());
  options.emplace_back("mask", m_mask);
  options.emplace_back("labels", m_resample.labels());
  options.emplace_back("start-from", m_startFrom);
  options.emplace_back("landmarks", m_landmarks);
  options.emplace_back("transforms-only", m_transformsOnly ? "on" : "off");
  return options;
}

McHandle<ZxSpatialData> AlignCommand::writeVolumes(AlignModule& module, const Stack& stack,
                                                   AlignReport& report, OutputFiles& files,
                                                   PartialOutput& partial, Console& console) const
{
  if (writesTable()) {
    files.write(m_output, [&](const std::string& path) {
      writeTransformTable(report.transforms, report.dimensions.width, report.dimensions.height, path);
    });
    return {};
  }
  if (m_transformsOnly) {
    module.storeAlignment();
    growVolume(files, partial, PartialOutput::kVolume, m_output, stack.volume, console);
    return {};
  }
  m_resample.settle(module, stack.info.shape);
  McHandle<ZxSpatialData> aligned = module.alignedVolume();
  passConfidence(stack.volume->parameters(), aligned->parameters());
  report.seconds.resampling = growVolume(files, partial, PartialOutput::kVolume, m_output, aligned, console);
  if (m_resample.hasLabels())
    report.seconds.resampling += growVolume(files, partial, PartialOutput::kLabels, m_resample.labelsOutput(),
                                            module.alignedLabels(), console);
  return aligned;
}

void AlignCommand::writePictureOf(AlignModule& module, const Stack& stack, const AlignReport& report,
                                  const McHandle<ZxSpatialData>& aligned, OutputFiles& files) const
{
  PictureInput picture;
  picture.title = stack.volume->getLabel().str();
  picture.before = stack.volume->getLattice();
  if (aligned) picture.after = aligned->getLattice();
  picture.transforms = report.transforms;
  picture.pairs = report.pairs;
  picture.windowMin = module.windowMin();
  picture.windowMax = module.windowMax();
  files.write(m_picture, [&](const std::string& path) { writePicture(picture, path); });
}

void AlignCommand::write(AlignModule& module, const Stack& stack, AlignReport& report, OutputFiles& files,
                         PartialOutput& partial, Console& console) const
{
  const Stopwatch watch;
  const WorkingPhase phase("Writing " + m_output);
  const McHandle<ZxSpatialData> aligned = writeVolumes(module, stack, report, files, partial, console);
  report.options = effectiveOptions(module);
  if (!m_picture.empty()) writePictureOf(module, stack, report, aligned, files);
  report.seconds.writing = watch.seconds() - report.seconds.resampling;
  report.seconds.total =
      report.seconds.reading + report.seconds.aligning + report.seconds.resampling + report.seconds.writing;
  if (!m_report.empty()) files.write(m_report, [&](const std::string& path) { writeReport(report, path); });
  files.commit();
  partial.remove();
}

AlignReport AlignCommand::newReport(AlignModule& module, int method, const io::VolumeInfo& info) const
{
  AlignReport report;
  report.version = ZXALIGN_VERSION;
  report.inputs = m_input.paths();
  report.output = m_output;
  report.dimensions = info.shape.dims;
  report.type = typeName(info.shape);
  report.method = methodName(module.control(), method);
  report.scale = m_scale.text();
  return report;
}

void AlignCommand::run(Console& console)
{
  AlignModule module(console, m_plugIns);
  const int method = findMethod(module.control(), m_method);
  if (!m_scaleText.empty()) m_scale = SliceScale::of(m_scaleText, SliceScale::Allowed::Reduction);
  const io::VolumeInfo info = m_input.info();
  OutputFiles files;
  announce(info, files);
  check(methodName(module.control(), method), info);
  using Start = PartialOutput::Start;
  PartialOutput partial(m_output, m_resume ? Start::Resume : Start::Anew, console);

  AlignReport report = newReport(module, method, info);
  const Stopwatch reading;
  partial.guard([&] {
    Stack stack = open(info);
    connect(module, stack, console);
    for (const McHandle<ZxField3>* field : {&stack.volume, &stack.compared})
      forgetConfidence((*field)->parameters());
    report.reference = m_reference.value_or(module.control().referenceSlice());
    partial.describe(facts(module, info, report));
    report.seconds.reading = reading.seconds();
    align(module, method, stack, report, partial, console);
    applyAtFullSize(module, stack, report);
    compareWithTruthTable(report);
    write(module, stack, report, files, partial, console);
  });
  console.summary(summaryOf(report));
  if (report.truth) console.summary(describe(*report.truth));
}

} // namespace cli
