// dispc info and dispc dump: what a file holds, in summary and in full.
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "dispc/sketchop.h"
#include "dispc/smd/polyprivate.h"
#include "tools/dispc/command_p.h"

namespace dispctool {

namespace {

// Names counted in order of first appearance: "a 2, b 1".
class Tally {
 public:
  void add(const std::string& name) {
    for (auto& [n, count] : counts_)
      if (n == name) {
        ++count;
        return;
      }
    counts_.emplace_back(name, 1);
  }
  [[nodiscard]] std::string text() const {
    std::string out;
    for (const auto& [name, count] : counts_) {
      if (!out.empty()) out += ", ";
      out += name + " " + std::to_string(count);
    }
    return out.empty() ? "none" : out;
  }

 private:
  std::vector<std::pair<std::string, long>> counts_;
};

template <class Labels>
std::string labelText(const Labels& labels) {
  std::string out;
  for (const auto label : labels) {
    if (!out.empty()) out += ' ';
    out += std::to_string(label);
  }
  return out.empty() ? "none" : out;
}

std::string propsText(const kcGraphicProps& p) {
  return "props{width=" + std::to_string(p.penWidth()) + " style=" + std::to_string(p.penStyle()) +
         " join=" + std::to_string(p.penJoin()) + " cap=" + std::to_string(p.penEndCap()) +
         " fill=" + std::to_string(p.fill()) + " arrow=" + std::to_string(p.arrowHead()) +
         " forward=" + std::to_string(p.arrowHeadForward()) + "}";
}

std::string pointText(const kcVector<2>& p) {
  // Appended piece by piece: g++ 12 at -O3 warns falsely about "(" + a temporary.
  std::string out = "(";
  out += exact(p.x());
  out += ',';
  out += exact(p.y());
  return out + ")";
}

const char* directionText(const kcSMDGDPoly& p) {
  if (p.isOpen()) return "open";
  return p.isDirectionPositive() ? "closed positive" : "closed negative";
}

const char* tolKindText(kcDimTol::TolType t) {
  switch (t) {
    case kcDimTol::eLimits:
      return "limits";
    case kcDimTol::eOffsets:
      return "offsets";
    case kcDimTol::ePercentages:
      return "percentages";
  }
  return "offsets";  // other kinds convert as offsets do
}

std::string tolText(const kcDimTol& t) {
  if (t.nomDim() == -1.0 && t.minTol() == -1.0 && t.maxTol() == -1.0) return "tol=none";
  return "tol{nominal=" + exact(t.nomDim()) + " min=" + exact(t.minTol()) + " max=" + exact(t.maxTol()) +
         " " + tolKindText(t.tolType()) + "}";
}

// --- info ---

void sketchInfo(const kcUISketch& sketch, std::ostream& out) {
  Tally opcodes;
  long records = 0;
  long layers[3] = {0, 0, 0};
  for (kcUISketchParser r(sketch); r.next(); ++records) {
    opcodes.add(kcUISketchOps::find(r.header().opcode())->name);
    ++layers[r.header().layer()];
  }
  out << "kind: sketch (kcUISketch)\n"
      << "bytes: " << sketch.length() << "\n"
      << "records: " << records << "\n"
      << "opcodes: " << opcodes.text() << "\n"
      << "layers: main " << layers[0] << ", overlay " << layers[1] << ", both " << layers[2] << "\n"
      << "bounding box: " << boxText(drawingBox(sketch, kcUITablet::bothLayers))
      << " (pels played on an identity tablet)\n";
}

void listInfo(const kcGraphicList& list, std::ostream& out) {
  Tally classes;
  for (const kcGraphicPtr& g : list.items()) classes.add(g ? g->className() : "null");
  out << "kind: graphic list (kcGraphicList)\n"
      << "graphics: " << list.items().size() << "\n"
      << "classes: " << classes.text() << "\n"
      << "bounding box: " << boxText(drawingBox(list, kcUITablet::mainLayer)) << " (client units)\n";
}

void polyInfo(const kcSMDGDPoly& poly, std::ostream& out) {
  long arcs = 0;
  for (int s = 0; s < poly.numVertices(); ++s)
    if (kcSMDGDPolyPrivate::segmentExists_(poly, s) && kcSMDGDPolyPrivate::isArcSegment_(poly, s)) ++arcs;
  out << "kind: poly (" << poly.className() << ")\n"
      << "name: " << quoted(poly.name()) << "\n"
      << "outline: " << directionText(poly) << "\n"
      << "vertices: " << poly.numVertices() << "\n"
      << "segments: " << poly.numSegments() << " (" << arcs << " arcs)\n"
      << "sub-model labels: " << labelText(poly.subModelLabels()) << "\n"
      << "bounding box: " << boxText(poly.boundingBox(kcXform<2>())) << " (client units)\n";
}

void modelInfo(const kcSMDGDModel& model, std::ostream& out) {
  long open = 0;
  for (const kcSMDGDPoly& p : model.polys()) open += p.isOpen();
  const kc2Rigid& place = model.placement();
  out << "kind: model (" << model.className() << ")\n"
      << "name: " << quoted(model.name()) << "\n"
      << "polys: " << model.numPolys() << " (" << model.numPolys() - open << " closed, " << open << " open)\n"
      << "vertices: " << model.numVertices() << "\n"
      << "sub-model labels: " << labelText(model.subModelLabels()) << "\n"
      << "placement: x " << rounded(place.trans().x()) << ", y " << rounded(place.trans().y()) << ", angle "
      << rounded(kcDegree(place.angle()).toDouble()) << " degrees\n"
      << "bounding box: " << boxText(model.boundingBox(kcXform<2>())) << " (client units)\n";
}

// --- dump ---

void listDump(const kcGraphicList& list, std::ostream& out) {
  long i = 0;
  for (const kcGraphicPtr& g : list.items()) {
    out << i++ << ": ";
    if (!g) {
      out << "null\n";
      continue;
    }
    out << g->className() << " colour=" << kfColorText(g->color()) << ' ' << propsText(g->props())
        << " box=" << boxText(g->encloseRect());
    // The graphics whose data is more than a shape say it.
    if (const auto* text = dynamic_cast<const kcGraphicText*>(g.get()))
      out << " text=" << quoted(text->text()) << " at=" << pointText(text->location().point());
    if (const auto* group = dynamic_cast<const kcGraphicGroup*>(g.get()))
      out << " items=" << group->numItems();
    out << '\n';
  }
}

void polyDump(const kcSMDGDPoly& poly, const std::string& indent, std::ostream& out) {
  const kcSMDColors& c = poly.colors();
  out << " " << quoted(poly.name()) << ' ' << directionText(poly) << " vertices=" << poly.numVertices()
      << " labels=" << labelText(poly.subModelLabels())
      << " colours{wireframe=" << kfColorText(c.wireframeDefaultColor())
      << " synthetic=" << kfColorText(c.syntheticDefaultColor())
      << " background=" << kfColorText(c.syntheticBackgroundColor()) << "} weight=" << exact(poly.weight())
      << '\n';
  long i = 0;
  for (const kcSMDGDPolyVertex& v : poly.vertices()) {
    out << indent << "vertex " << i++ << " point=" << pointText(v.point())
        << " radius=" << exact(v.vertexRadius()) << " span=" << exact(v.segmentAngleSpan().toDouble())
        << " prev=" << exact(v.percentPrevSegment()) << " next=" << exact(v.percentNextSegment())
        << " label=" << v.subModelLabel() << ' ' << tolText(v.segmentLengthTol()) << '\n';
  }
}

void modelDump(const kcSMDGDModel& model, std::ostream& out) {
  const kc2Rigid& place = model.placement();
  out << "model " << quoted(model.name()) << " polys=" << model.numPolys()
      << " labels=" << labelText(model.subModelLabels()) << " placement=" << pointText(place.trans())
      << " angle=" << exact(kcDegree(place.angle()).toDouble()) << '\n';
  for (int i = 0; i < model.numPolys(); ++i) {
    out << "  poly " << i;
    polyDump(model.poly(i), "    ", out);
  }
}

}  // namespace

int runInfo(const Invocation& in) {
  const kcDispcFileContent content = loadFile(in.file());
  std::cout << "file: " << in.file() << '\n';
  std::visit(
      [](const auto& value) {
        using T = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<T, kcUISketch>)
          sketchInfo(value, std::cout);
        else if constexpr (std::is_same_v<T, kcGraphicList>)
          listInfo(value, std::cout);
        else if constexpr (std::is_same_v<T, kcSMDGDPoly>)
          polyInfo(value, std::cout);
        else
          modelInfo(value, std::cout);
      },
      content);
  return kExitOk;
}

int runDump(const Invocation& in) {
  const kcDispcFileContent content = loadFile(in.file());
  std::visit(
      [](const auto& value) {
        using T = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<T, kcUISketch>) {
          kfDumpUISketch(value, std::cout);
        } else if constexpr (std::is_same_v<T, kcGraphicList>) {
          listDump(value, std::cout);
        } else if constexpr (std::is_same_v<T, kcSMDGDPoly>) {
          std::cout << "poly";
          polyDump(value, "  ", std::cout);
        } else {
          modelDump(value, std::cout);
        }
      },
      content);
  return kExitOk;
}

}  // namespace dispctool
