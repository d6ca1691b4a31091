#include "AlignReport.h"

#include "io/Error.h"
#include "zx/ZxWriteAll.h"

#include <QFile>
#include <QSaveFile>
#include <algorithm>
#include <nlohmann/json.hpp>
#include <numeric>

namespace cli {
namespace {

using Json = nlohmann::ordered_json;

Json optionsJson(const AlignReport& report)
{
  Json json = Json::object();
  for (const auto& [name, value] : report.options) json[name] = value;
  return json;
}

Json transformJson(const ZxAlignTransform& transform)
{
  return {{"tx", transform.tx},
          {"ty", transform.ty},
          {"angle_deg", transform.angleDegrees},
          {"flip", transform.flip}};
}

Json pairJson(const ZxAlignPairResult& pair, const std::optional<PairConfidence>& confidence)
{
  Json json = {{"editable", pair.pair.editable}, {"reference", pair.pair.reference}};
  json.update(transformJson(pair.transform));
  json["quality_before"] = pair.qualityBefore;
  json["quality_after"] = pair.qualityAfter;
  json["changed"] = pair.changed;
  json["seconds"] = pair.seconds;
  if (confidence) {
    json["confidence"] = confidence->confidence;
    json["matched_with"] = confidence->reference;
    if (!confidence->reason.empty()) json["reason"] = confidence->reason;
  }
  return json;
}

Json qualityJson(const std::vector<ZxAlignPairResult>& pairs, double ZxAlignPairResult::*quality)
{
  if (pairs.empty()) return nullptr;
  std::vector<double> values;
  for (const auto& pair : pairs) values.push_back(pair.*quality);
  std::sort(values.begin(), values.end());
  const std::size_t n = values.size();
  return {{"mean", std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(n)},
          {"median", (values[(n - 1) / 2] + values[n / 2]) / 2.0},
          {"min", values.front()}};
}

Json secondsJson(const AlignReport::Seconds& seconds)
{
  return {{"reading", seconds.reading},
          {"aligning", seconds.aligning},
          {"resampling", seconds.resampling},
          {"writing", seconds.writing},
          {"total", seconds.total}};
}

Json totalsJson(const AlignReport& report)
{
  return {{"pairs", report.pairs.size()},
          {"quality_before", qualityJson(report.pairs, &ZxAlignPairResult::qualityBefore)},
          {"quality_after", qualityJson(report.pairs, &ZxAlignPairResult::qualityAfter)},
          {"seconds", secondsJson(report.seconds)}};
}

Json truthJson(const TruthDistance& truth)
{
  return {{"unit", "pixel"},
          {"median", truth.median},
          {"mean", truth.mean},
          {"max", truth.max},
          {"above_1_px", truth.far},
          {"pairs", truth.pairs},
          {"accumulated",
           {{"mean", truth.accumulatedMean}, {"max", truth.accumulatedMax}, {"slices", truth.accumulated}}}};
}

Json reportJson(const AlignReport& report)
{
  Json json = {{"program", "zxalign"},
               {"version", report.version},
               {"input", report.inputs},
               {"output", report.output},
               {"options", optionsJson(report)},
               {"dimensions",
                {{"width", report.dimensions.width},
                 {"height", report.dimensions.height},
                 {"slices", report.dimensions.slices}}},
               {"type", report.type},
               {"method", report.method},
               {"scale", report.scale},
               {"reference", report.reference},
               {"interrupted", report.interrupted}};
  json["totals"] = totalsJson(report);
  if (report.truth) json["truth"] = truthJson(*report.truth);
  json["pairs"] = Json::array();
  for (std::size_t i = 0; i < report.pairs.size(); ++i)
    json["pairs"].push_back(
        pairJson(report.pairs[i], i < report.confidences.size() ? report.confidences[i] : std::nullopt));
  json["transforms"] = Json::array();
  for (const auto& transform : report.transforms) json["transforms"].push_back(transformJson(transform));
  return json;
}

} // namespace

std::string reportText(const AlignReport& report)
{
  // File names may be no UTF-8, which JSON has to be.
  return reportJson(report).dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void writeReport(const AlignReport& report, const std::string& path)
{
  const std::string text = reportText(report);
  QSaveFile file(QFile::decodeName(path.c_str()));
  if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || !zxWriteAll(file, text) || !file.commit())
    throw io::Error("The report " + path + " could not be written: " + file.errorString().toStdString() +
                    ".");
}

} // namespace cli
