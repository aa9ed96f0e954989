// Writes one dispc file of each kind, the files the dispc tool reads:
//   sketch.dispc    a sketch: an inspection view recorded in pels, on the
//                   main layer, the overlay and both
//   graphics.dispc  a graphic list: regions of interest and marks
//   pad.dispc       an SMD poly: an obround pad, two of its segments arcs
//   sot23.dispc     an SMD model: a SOT-23 package, its body and three leads
// Each is read back and compared with what was written. Exits 1 when a
// file cannot be written or does not read back equal.
//   write_files [folder]     (default: beside the program)
#include <cstdio>
#include <filesystem>
#include <string>

#include "dispc/dispc.h"

namespace {

// --- the sketch ---

// Client units are pels here (an identity tablet), y down as on a screen.
kcUISketch inspectionView() {
  kcUITablet recorder;
  recorder.recordOn() = true;
  const kcGraphicProps outline(kcColor::green, 2, kcGraphicProps::penSolid, false);
  kcGraphicProps found(kcColor::yellow, 1, kcGraphicProps::penSolid, false);
  found.arrowHead(false);
  const kcGraphicProps searchArea(kcColor::cyan, 1, kcGraphicProps::penDash, false);
  // The part as found on the main layer, the search area and labels on the overlay.
  recorder.draw(kcRect(kcVector<2>(60, 40), kcVector<2>(280, 200)), outline, kcUITablet::mainLayer);
  recorder.draw(kcCircle(kcVector<2>(120, 100), 30), found, kcUITablet::mainLayer);
  recorder.draw(kcCircle(kcVector<2>(280, 180), 30), found, kcUITablet::mainLayer);
  recorder.draw(kcLineSeg(kcVector<2>(120, 100), kcVector<2>(280, 180)), found, kcUITablet::mainLayer);
  recorder.draw(kcRect(kcVector<2>(20, 20), kcVector<2>(360, 260)), searchArea, kcUITablet::overlayLayer);
  recorder.draw(L"part found", kcPoint(200, 250), kcColor::white, kcColor::pass,
                kcUIFormat(0, kcUIFormat::topCenter), kcUITablet::overlayLayer);
  // The centre cross shows on whichever layer the sketch is played.
  recorder.draw(kcCross(kcVector<2>(200, 140), 12),
                kcGraphicProps(kcColor::red, 1, kcGraphicProps::penSolid, false), kcUITablet::bothLayers);
  return recorder.sketch();
}

// --- the graphic list ---

// Client units are pels, as for the sketch.
kcGraphicList marks() {
  kcGraphicList list;
  kcGraphicProps roi(kcColor::cyan, 1, kcGraphicProps::penDash, false);
  list.append(kcGraphic::makeShapeGraphic(kcRect(kcVector<2>(40, 30), kcVector<2>(240, 160)), roi));
  kcGraphicProps filled(kcColor::dkGreen, 1, kcGraphicProps::penSolid, true);
  list.append(kcGraphic::makeShapeGraphic(kcCircle(kcVector<2>(100, 90), 25), filled));
  kcGraphicProps edge(kcColor::orange, 2, kcGraphicProps::penSolid, false);
  edge.arrowHead(false);
  list.append(kcGraphic::makeShapeGraphic(
      kcPolyline({kcVector<2>(160, 60), kcVector<2>(250, 80), kcVector<2>(230, 170)}, false), edge));
  list.append(
      kcGraphic::makeShapeGraphic(kcLineSeg(kcVector<2>(40, 200), kcVector<2>(280, 200)),
                                  kcGraphicProps(kcColor::magenta, 1, kcGraphicProps::penSolid, false)));
  list.append(kfMakeHandle<kcGraphicCross>(kcCross(kcVector<2>(160, 110), 10), kcColor::red));
  list.append(kfMakeHandle<kcGraphicText>(L"ROI 1", kcPoint(40, 30), kcColor::white, kcColor::pass,
                                          kcUIFormat(0, kcUIFormat::bottomLeft), kcVector<2>(0, -2)));
  return list;
}

// --- the SMD descriptions ---

// A sharp corner; tol is the length tolerance of the segment that ends here,
// span the sweep of that segment (0: straight).
kcSMDGDPolyVertex corner(double x, double y, long label, const kcDimTol& tol, double radius = 0.0,
                         double span = 0.0) {
  return kcSMDGDPolyVertex(kcVector<2>(x, y), radius, kcDegree(span), 0.5, 0.5, label, tol);
}

// Millimetres: a pad 2.4 long over its round ends and 1.0 wide,
// counter-clockwise from its lower left, y up. The straight sides hold
// +-0.05 mm; the ends (arcs of half a turn) have no tolerance.
kcSMDGDPoly obroundPad() {
  constexpr double kHalfStraight = 0.7, kHalfWidth = 0.5;
  const kcDimTol side(2 * kHalfStraight, 0.05, 0.05, kcDimTol::eOffsets);
  kcSMDGDPoly pad(L"pad");
  pad << corner(-kHalfStraight, -kHalfWidth, 0, kcDimTol(), 0.0, 180.0)
      << corner(kHalfStraight, -kHalfWidth, 0, side)
      << corner(kHalfStraight, kHalfWidth, 0, kcDimTol(), 0.0, 180.0)
      << corner(-kHalfStraight, kHalfWidth, 0, side);
  pad.close();
  return pad;
}

// Millimetres, from the package drawing, y up: the body 2.9 x 1.3 with
// corners rounded by 0.1, pins 1 and 2 below it at x = -+0.95, pin 3 above
// at x = 0, each lead 0.4 wide, 2.4 over the lead tips.
constexpr double kBodyLength = 2.9, kBodyWidth = 1.3, kBodyCorner = 0.1;
constexpr double kLeadWidth = 0.4, kSpan = 2.4, kPinOffset = 0.95;
// (kSpan - kBodyWidth) / 2, as the drawing gives it.
constexpr double kLeadReach = 0.55;

// Counter-clockwise from the lower left corner; label 0, +-0.1 mm.
kcSMDGDPoly body() {
  const double x = kBodyLength / 2, y = kBodyWidth / 2;
  const kcDimTol length(kBodyLength, 0.1, 0.1, kcDimTol::eOffsets);
  const kcDimTol width(kBodyWidth, 0.1, 0.1, kcDimTol::eOffsets);
  kcSMDGDPoly p(L"body");
  p.colors(kcSMDColors(kcColor::green, kcColor::dkGrey, kcColor::black));
  p << corner(-x, -y, 0, width, kBodyCorner) << corner(x, -y, 0, length, kBodyCorner)
    << corner(x, y, 0, width, kBodyCorner) << corner(-x, y, 0, length, kBodyCorner);
  p.close();
  return p;
}

// The foot of a pin, from the body's edge outwards, counter-clockwise;
// labelled with the pin. Its reach holds 0.45 to 0.65 mm, its width 0.3 to 0.5.
kcSMDGDPoly lead(int pin, double xCentre, bool below) {
  const double w = kLeadWidth / 2, edge = kBodyWidth / 2, tip = kSpan / 2;
  const double y0 = below ? -tip : edge, y1 = below ? -edge : tip;
  const kcDimTol reach(kLeadReach, 0.45, 0.65, kcDimTol::eLimits);
  const kcDimTol width(kLeadWidth, 0.3, 0.5, kcDimTol::eLimits);
  kcSMDGDPoly p(L"pin " + std::to_wstring(pin));
  p.colors(kcSMDColors(kcColor::yellow, kcColor::white, kcColor::black));
  p << corner(xCentre - w, y0, pin, reach) << corner(xCentre + w, y0, pin, width)
    << corner(xCentre + w, y1, pin, reach) << corner(xCentre - w, y1, pin, width);
  p.close();
  return p;
}

kcSMDGDModel sot23() {
  kcSMDGDModel model(L"SOT-23");
  model << body() << lead(1, -kPinOffset, true) << lead(2, kPinOffset, true) << lead(3, 0.0, false);
  return model;
}

// --- writing ---

int failures = 0;

// Writes content to folder/name and reads it back; same tells whether the
// two hold the same.
template <class Same>
void write(const std::filesystem::path& folder, const char* name, const kcDispcFileContent& content,
           Same same) {
  const std::string path = (folder / name).string();
  try {
    kfSave(path, content);
    const kcDispcFileContent back = kfLoad(path);
    const bool equal = back.index() == content.index() && same(back);
    std::printf("  %-16s %-12s %s\n", name, kfKindName(kfKind(content)),
                equal ? "read back equal" : "DIFFERENT");
    if (!equal) ++failures;
  } catch (const kcException& e) {
    std::printf("  %s: %s\n", path.c_str(), e.what());
    ++failures;
  }
}

template <class T>
bool holds(const kcDispcFileContent& content, const T& value) {
  return std::get<T>(content) == value;
}

}  // namespace

int main(int argc, char** argv) {
  const std::filesystem::path folder = argc > 1 ? argv[1] : DISPC_DEMO_FOLDER;
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) {
    std::printf("cannot make the folder %s: %s\n", folder.string().c_str(), error.message().c_str());
    return 1;
  }
  std::printf("dispc files in %s:\n", folder.string().c_str());

  const kcUISketch sketch = inspectionView();
  write(folder, "sketch.dispc", sketch, [&](const kcDispcFileContent& c) { return holds(c, sketch); });

  // Graphics read back are new objects: the lists compare by what they draw.
  const kcGraphicList list = marks();
  write(folder, "graphics.dispc", list, [&](const kcDispcFileContent& c) {
    const kcGraphicList& back = std::get<kcGraphicList>(c);
    return back.items().size() == list.items().size() &&
           back.sketch(kcUITablet::mainLayer) == list.sketch(kcUITablet::mainLayer);
  });

  // Every poly validated as it was built: a bad outline would have thrown.
  try {
    const kcSMDGDPoly pad = obroundPad();
    write(folder, "pad.dispc", pad, [&](const kcDispcFileContent& c) { return holds(c, pad); });
    const kcSMDGDModel model = sot23();
    write(folder, "sot23.dispc", model, [&](const kcDispcFileContent& c) { return holds(c, model); });
  } catch (const kcException& e) {
    std::printf("  building the SMD descriptions failed: %s\n", e.what());
    return 1;
  }

  if (failures) return 1;
  std::printf("all files written\n");
  return 0;
}
