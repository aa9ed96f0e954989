// dispc render and dispc synth: a file drawn as a picture on the Cairo
// device, and an SMD description's synthetic grey image.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>

#include "imageio/imageio.h"
#include "scopes/cairo/cairoscope.h"
#include "tools/dispc/command_p.h"

namespace dispctool {

namespace {

constexpr long kDefaultWidth = 800, kDefaultHeight = 600;
// The share of the picture's smaller side left free around a fitted drawing.
constexpr double kMarginShare = 0.05;
// How long a direction arrow of an SMD outline is drawn, in pels.
constexpr double kArrowPels = 20.0;

// Client units to pels: scale, a mirror of y when y points up, then offset.
struct View {
  double scale = 1.0;
  bool yUp = false;
  kcVector<2> offset;
  [[nodiscard]] kcXform<2> map() const {
    return kcXform<2>(kcMatrix<2>::scale(scale, yUp ? -scale : scale), offset);
  }
};

// The view that puts box in the middle of a picture of pels, as large as
// the margin leaves room for; a given scale or offset replaces its part.
View fit(const kcRect& box, const kcVector<2>& pels, bool yUp, std::optional<double> scale,
         std::optional<kcVector<2>> offset) {
  View v;
  v.yUp = yUp;
  if (scale) {
    v.scale = *scale;
  } else if (!box.isEmpty()) {
    const double margin = kMarginShare * std::min(pels.x(), pels.y());
    double s = std::numeric_limits<double>::infinity();
    // A box without width (a vertical line) is fitted by its height alone.
    if (box.width() > 0.0) s = std::min(s, (pels.x() - 2 * margin) / box.width());
    if (box.height() > 0.0) s = std::min(s, (pels.y() - 2 * margin) / box.height());
    if (std::isfinite(s) && s > 0.0) v.scale = s;
  }
  const double sy = yUp ? -v.scale : v.scale;
  if (offset) {
    v.offset = *offset;
  } else if (box.isEmpty()) {
    // Nothing to centre: the origin at the picture's corner, the axes pointing in.
    v.offset = kcVector<2>(0.0, yUp ? pels.y() : 0.0);
  } else {
    const kcVector<2> c = box.center();
    v.offset = kcVector<2>(pels.x() / 2 - v.scale * c.x(), pels.y() / 2 - sy * c.y());
  }
  return v;
}

// The extension of path, lower case, without the dot.
std::string extension(const std::string& path) {
  const auto dot = path.rfind('.');
  const auto slash = path.rfind('/');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
  std::string ext = path.substr(dot + 1);
  std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
  return ext;
}

// The output path and its format, one of formats ('|' between them).
std::pair<std::string, std::string> output(const Invocation& in, const std::string& formats) {
  const std::string path = in.required("output");
  const std::string ext = extension(path);
  if (ext.empty() || ("|" + formats + "|").find("|" + ext + "|") == std::string::npos) {
    // "png|svg|pdf" as ".png, .svg or .pdf".
    std::string names = "." + formats;
    names.replace(names.rfind('|'), 1, " or .");
    for (auto bar = names.find('|'); bar != std::string::npos; bar = names.find('|'))
      names.replace(bar, 1, ", .");
    throw UsageError("--output " + path + ": the name must end in " + names);
  }
  return {path, ext};
}

kcVector<2> pictureSize(const Invocation& in) {
  return in.size("size").value_or(kcVector<2>(kDefaultWidth, kDefaultHeight));
}

// Sketches and graphic lists are in pels on an identity tablet, y down; SMD
// descriptions are drawn as packages are, y up.
bool yUp(const std::optional<std::string>& given, const kcDispcFileContent& content) {
  if (given) return *given == "up";
  const keDispcFileKind kind = kfKind(content);
  return kind == keDispcFileKind::poly || kind == keDispcFileKind::model;
}

kcUITablet::Layers layer(const Invocation& in) {
  const std::string l = in.choice("layer", "main|overlay|both").value_or("both");
  if (l == "main") return kcUITablet::mainLayer;
  if (l == "overlay") return kcUITablet::overlayLayer;
  return kcUITablet::bothLayers;
}

// The outline in its wireframe colour with an arrow on every segment, on
// the main layer.
template <class Smd>
void drawSmd(const Smd& smd, kcUITablet& tablet, const View& view) {
  smd.drawWireframe(kcXform<2>(), tablet);
  // The arrows keep their size on screen whatever the scale.
  const double size = kArrowPels / view.scale;
  if (std::isfinite(size)) smd.drawDirectionArrows(kcXform<2>(), tablet, size);
}

void draw(const kcDispcFileContent& content, kcUITablet& tablet, kcUITablet::Layers layer, const View& view) {
  switch (kfKind(content)) {
    case keDispcFileKind::sketch:
      // Played on both layers at once, a record made for both layers would
      // reach neither: each layer is played on its own, and such a record
      // draws on each.
      if (layer != kcUITablet::overlayLayer)
        tablet.draw(std::get<kcUISketch>(content), kcPoint(0, 0), kcUITablet::mainLayer);
      if (layer != kcUITablet::mainLayer)
        tablet.draw(std::get<kcUISketch>(content), kcPoint(0, 0), kcUITablet::overlayLayer);
      break;
    case keDispcFileKind::graphicList: {
      // A list draws nothing past a null handle; a file may hold some.
      kcGraphicList list;
      for (const kcGraphicPtr& g : std::get<kcGraphicList>(content).items())
        if (g) list.append(g);
      // A graphic drawn on both layers would be recorded, not drawn: each layer is drawn on its own.
      if (layer != kcUITablet::overlayLayer) list.draw(tablet, kcUITablet::mainLayer);
      if (layer != kcUITablet::mainLayer) list.draw(tablet, kcUITablet::overlayLayer);
      break;
    }
    case keDispcFileKind::poly:
      drawSmd(std::get<kcSMDGDPoly>(content), tablet, view);
      break;
    case keDispcFileKind::model:
      drawSmd(std::get<kcSMDGDModel>(content), tablet, view);
      break;
  }
}

void report(const std::string& path, const kcVector<2>& pels, const View& v) {
  std::cout << "wrote " << path << ": " << rounded(pels.x()) << " x " << rounded(pels.y()) << " pels, scale "
            << rounded(v.scale) << " pels per unit, offset " << rounded(v.offset.x()) << ","
            << rounded(v.offset.y()) << ", y " << (v.yUp ? "up" : "down") << '\n';
}

// The grey under the synthetic drawing: the background of the (first) poly.
unsigned char backgroundGrey(const kcDispcFileContent& content) {
  kcColor background = kcColor::black;
  if (const auto* poly = std::get_if<kcSMDGDPoly>(&content))
    background = poly->colors().syntheticBackgroundColor();
  else if (const auto* model = std::get_if<kcSMDGDModel>(&content); model && model->numPolys() > 0)
    background = model->poly(0).colors().syntheticBackgroundColor();
  return kcSMDColors::colorToGrayScale(background);
}

}  // namespace

int runRender(const Invocation& in) {
  const auto [path, format] = output(in, "png|svg|pdf");
  if (in.has("size") && in.has("background"))
    throw UsageError("--size and --background do not go together: the picture takes the background's size");
  // Every option is checked before the file is read: a usage error comes first.
  const kcUITablet::Layers drawOn = layer(in);
  const auto y = in.choice("y", "up|down");
  const auto scale = in.positive("scale");
  const auto offset = in.point("offset");
  const kcVector<2> size = pictureSize(in);
  kcPelBuffer<unsigned char> background;
  if (const auto image = in.value("background")) {
    background = kfReadPng(*image);
    if (background.width() > kMaxPicturePels || background.height() > kMaxPicturePels)
      throw Failure(*image + ": larger than " + std::to_string(kMaxPicturePels) + " pels a side");
  }
  const kcDispcFileContent content = loadFile(in.file());

  const kcVector<2> pels = background.isNull() ? size
                                               : kcVector<2>(static_cast<double>(background.width()),
                                                             static_cast<double>(background.height()));
  const View view = fit(drawingBox(content, drawOn), pels, yUp(y, content), scale, offset);

  std::unique_ptr<kcUICairoScope> device =
      background.isNull()
          ? std::make_unique<kcUICairoScope>(static_cast<long>(pels.x()), static_cast<long>(pels.y()))
          : std::make_unique<kcUICairoScope>(kcPelBuffer_const<unsigned char>(background));
  device->antialias(in.has("antialias"));
  kcUITablet tablet(device.get(), &device->overlay());
  tablet.baseMap(view.map());
  try {
    draw(content, tablet, drawOn, view);
  } catch (const kcException& e) {
    // A scale so extreme that the geometry degenerates in pels.
    throw Failure(in.file() + ": cannot draw it at scale " + rounded(view.scale) + ": " + e.what());
  }

  if (format == "png")
    device->writePng(path);
  else if (format == "svg")
    device->writeSvg(path);
  else
    device->writePdf(path);
  report(path, pels, view);
  return kExitOk;
}

int runSynth(const Invocation& in) {
  const auto [path, format] = output(in, "png|pgm");
  const kcVector<2> pels = pictureSize(in);
  const auto y = in.choice("y", "up|down");
  std::optional<double> scale;
  if (const auto pel = in.positive("pel")) scale = 1.0 / *pel;
  const kcDispcFileContent content = loadFile(in.file());
  requireSmd(in, content);
  const View view =
      fit(drawingBox(content, kcUITablet::mainLayer), pels, yUp(y, content), scale, std::nullopt);

  kcPelBuffer<unsigned char> image(static_cast<long>(pels.x()), static_cast<long>(pels.y()));
  image.fill(backgroundGrey(content));
  image.imageFromClientXform(view.map());
  try {
    if (const auto* poly = std::get_if<kcSMDGDPoly>(&content))
      poly->drawSynthetic(kcXform<2>(), image);
    else
      std::get<kcSMDGDModel>(content).drawSynthetic(kcXform<2>(), image);
  } catch (const kcException& e) {
    throw Failure(in.file() + ": cannot draw it at scale " + rounded(view.scale) + ": " + e.what());
  }

  if (format == "png")
    kfWritePng(image, path);
  else
    kfWritePgm(image, path);
  report(path, pels, view);
  return kExitOk;
}

}  // namespace dispctool
