// The dispc tool end to end: the built program run on the files the example
// write_files made (sketch.dispc, graphics.dispc, pad.dispc, sot23.dispc)
// and on damaged copies, its exit code, output and pictures checked.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "dispc/dispc.h"
#include "imageio/imageio.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

const char* const kKinds[] = {"sketch.dispc", "graphics.dispc", "pad.dispc", "sot23.dispc"};

std::string input(const std::string& name) { return (fs::path(DISPC_TOOL_FILES) / name).string(); }

// A folder of the test's own, so that tests may run side by side.
fs::path scratch() {
  const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
  const fs::path dir =
      fs::path(DISPC_TOOL_SCRATCH) / (std::string(test->test_suite_name()) + "." + test->name());
  fs::create_directories(dir);
  return dir;
}

std::string scratch(const std::string& name) { return (scratch() / name).string(); }

Bytes readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), {});
}

void writeBytes(const std::string& path, const Bytes& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

std::string readText(const fs::path& path) {
  std::ifstream in(path);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

struct Result {
  // The exit code; 128 + the signal for a run that crashed.
  int code = -1;
  std::string out;
  std::string err;
};

// Runs the tool with args (a shell word list) and collects what it wrote.
Result dispc(const std::string& args) {
  const fs::path dir = scratch();
  const std::string command = std::string("'") + DISPC_TOOL + "' " + args + " >'" +
                              (dir / "stdout").string() + "' 2>'" + (dir / "stderr").string() + "'";
  const int status = std::system(command.c_str());
  Result r;
  r.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  r.out = readText(dir / "stdout");
  r.err = readText(dir / "stderr");
  return r;
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) out.push_back(line);
  return out;
}

// Whether any pel of the window [x0, x1] x [y0, y1] is lit (not black).
bool lit(const kcPelBuffer<unsigned char>& image, long x0, long x1, long y0, long y1) {
  for (long y = y0; y <= y1; ++y)
    for (long x = x0; x <= x1; ++x)
      if (image.get(x, y) > 20) return true;
  return false;
}

// --- help and usage ---

TEST(DispcUsage, HelpNamesEveryCommand) {
  const Result r = dispc("--help");
  EXPECT_EQ(r.code, 0);
  for (const char* command : {"info", "dump", "render", "synth", "validate"})
    EXPECT_TRUE(contains(r.out, std::string("\n  ") + command + " ")) << command;
}

TEST(DispcUsage, EveryCommandHasItsHelp) {
  for (const char* command : {"info", "dump", "render", "synth", "validate"}) {
    const Result r = dispc(std::string(command) + " --help");
    EXPECT_EQ(r.code, 0) << command;
    EXPECT_EQ(r.out.rfind(std::string("usage: dispc ") + command + " ", 0), 0u) << r.out;
  }
  // The coordinate rule is stated where the options are.
  EXPECT_TRUE(contains(dispc("render --help").out, "y' = -S y + Y"));
  EXPECT_TRUE(contains(dispc("help synth").out, "--pel SIZE"));
}

TEST(DispcUsage, BadCommandLinesExitTwo) {
  const std::string sot23 = input("sot23.dispc");
  const struct {
    std::string args;
    std::string says;
  } cases[] = {
      {"", "no command given"},
      {"frobnicate " + sot23, "unknown command 'frobnicate'"},
      {"info", "no FILE given"},
      {"info " + sot23 + " " + sot23, "one FILE only"},
      {"info --verbose " + sot23, "unknown option --verbose"},
      {"render " + sot23, "--output is required"},
      {"render " + sot23 + " -o", "--output needs a value"},
      {"render " + sot23 + " -o out.jpg", "must end in .png, .svg or .pdf"},
      {"render " + sot23 + " -o a.png -o b.png", "--output given twice"},
      {"render " + sot23 + " -o a.png --size 800", "bad value '800' for --size"},
      {"render " + sot23 + " -o a.png --size 0x600", "each side 1 to 32767 pels"},
      {"render " + sot23 + " -o a.png --scale -2", "bad value '-2' for --scale"},
      {"render " + sot23 + " -o a.png --offset 3", "bad value '3' for --offset"},
      {"render " + sot23 + " -o a.png --layer top", "bad value 'top' for --layer"},
      {"render " + sot23 + " -o a.png --y left", "bad value 'left' for --y"},
      {"render " + sot23 + " -o a.png --antialias=yes", "--antialias takes no value"},
      {"render " + sot23 + " -o a.png --size 10x10 --background b.png", "do not go together"},
      {"synth " + sot23 + " -o a.svg", "must end in .png or .pgm"},
      {"synth " + sot23 + " -o a.png --pel 0", "bad value '0' for --pel"},
      {"synth " + input("sketch.dispc") + " -o a.png", "holds a sketch; synth takes a poly or a model"},
      {"validate " + input("graphics.dispc"), "holds a graphic list; validate takes a poly or a model"},
  };
  for (const auto& c : cases) {
    const Result r = dispc(c.args);
    EXPECT_EQ(r.code, 2) << c.args;
    EXPECT_TRUE(contains(r.err, c.says)) << c.args << "\n" << r.err;
    EXPECT_TRUE(contains(r.err, "--help'")) << c.args;
    EXPECT_EQ(r.out, "") << c.args;
  }
}

// --- info and dump ---

TEST(DispcInfo, SketchCountsRecordsAndLayers) {
  const Result r = dispc("info " + input("sketch.dispc"));
  EXPECT_EQ(r.code, 0);
  EXPECT_TRUE(contains(r.out, "kind: sketch (kcUISketch)\n"));
  EXPECT_TRUE(contains(r.out, "records: 7\n"));
  EXPECT_TRUE(contains(r.out, "opcodes: Rect 2, Circle 2, LineSeg 1, UnicodeString 1, Cross 1\n"));
  EXPECT_TRUE(contains(r.out, "layers: main 4, overlay 2, both 1\n"));
  // The dashed search area, 20 to 380 by 20 to 280, one pel wide.
  EXPECT_TRUE(contains(r.out, "bounding box: x 19 .. 381, y 19 .. 281 (pels"));
}

TEST(DispcInfo, GraphicListCountsGraphicsByClass) {
  const Result r = dispc("info " + input("graphics.dispc"));
  EXPECT_EQ(r.code, 0);
  EXPECT_TRUE(contains(r.out, "graphics: 6\n"));
  EXPECT_TRUE(contains(r.out, "kcGraphicSimple<kcLineSeg> 1, kcGraphicCross 1, kcGraphicText 1\n"));
  // Text and crosses have no box; the rectangle and the segment below it make it.
  EXPECT_TRUE(contains(r.out, "bounding box: x 40 .. 280, y 30 .. 200 (client units)\n"));
}

TEST(DispcInfo, SmdCountsPolysVerticesAndLabels) {
  const Result model = dispc("info " + input("sot23.dispc"));
  EXPECT_EQ(model.code, 0);
  EXPECT_TRUE(contains(model.out, "kind: model (kcSMDGDModel)\nname: \"SOT-23\"\n"));
  EXPECT_TRUE(contains(model.out, "polys: 4 (4 closed, 0 open)\nvertices: 16\nsub-model labels: 0 1 2 3\n"));
  EXPECT_TRUE(contains(model.out, "bounding box: x -1.45 .. 1.45, y -1.2 .. 1.2 (client units)\n"));
  const Result pad = dispc("info " + input("pad.dispc"));
  EXPECT_EQ(pad.code, 0);
  EXPECT_TRUE(contains(pad.out, "outline: closed positive\n"));
  EXPECT_TRUE(contains(pad.out, "segments: 4 (2 arcs)\n"));
  // The round ends bulge 0.5 beyond the straight sides' ends at -+0.7.
  EXPECT_TRUE(contains(pad.out, "bounding box: x -1.2 .. 1.2, y -0.5 .. 0.5 (client units)\n"));
}

TEST(DispcDump, SketchIsTheLibrarysRecordDump) {
  const std::string path = input("sketch.dispc");
  std::ostringstream expected;
  kfDumpUISketch(std::get<kcUISketch>(kfLoad(path)), expected);
  const Result r = dispc("dump " + path);
  EXPECT_EQ(r.code, 0);
  EXPECT_EQ(r.out, expected.str());
}

TEST(DispcDump, GraphicListIsOneLinePerGraphic) {
  const Result r = dispc("dump " + input("graphics.dispc"));
  EXPECT_EQ(r.code, 0);
  const std::vector<std::string> out = lines(r.out);
  ASSERT_EQ(out.size(), 6u);
  EXPECT_EQ(out[0].rfind("0: kcGraphicWithFill<kcRect, kcGenRect> colour=stock index 254", 0), 0u) << out[0];
  EXPECT_TRUE(contains(out[1], "fill=1")) << out[1];
  EXPECT_TRUE(contains(out[1], "box=x 75 .. 125, y 65 .. 115")) << out[1];
  EXPECT_TRUE(contains(out[5], "kcGraphicText")) << out[5];
  EXPECT_TRUE(contains(out[5], "text=\"ROI 1\" at=(40,30)")) << out[5];
}

TEST(DispcDump, SmdListsEveryVertex) {
  const Result r = dispc("dump " + input("sot23.dispc"));
  EXPECT_EQ(r.code, 0);
  const std::vector<std::string> out = lines(r.out);
  // The model, then each of 4 polys and its 4 vertices.
  ASSERT_EQ(out.size(), 21u);
  EXPECT_EQ(out[0], "model \"SOT-23\" polys=4 labels=0 1 2 3 placement=(0,0) angle=0");
  EXPECT_TRUE(contains(out[1], "poly 0 \"body\" closed positive vertices=4 labels=0")) << out[1];
  EXPECT_EQ(out[3],
            "    vertex 1 point=(1.45,-0.65) radius=0.1 span=0 prev=0.5 next=0.5 label=0 "
            "tol{nominal=2.9 min=0.1 max=0.1 offsets}");
  EXPECT_TRUE(contains(out[8], "label=1 tol{nominal=0.4 min=0.3 max=0.5 limits}")) << out[8];
  const Result pad = dispc("dump " + input("pad.dispc"));
  EXPECT_TRUE(contains(
      pad.out, "  vertex 0 point=(-0.7,-0.5) radius=0 span=180 prev=0.5 next=0.5 label=0 tol=none\n"));
}

// --- render and synth ---

TEST(DispcRender, WritesEveryFormatForEveryKind) {
  const struct {
    const char* ext;
    Bytes magic;
  } formats[] = {{"png", {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'}},
                 {"svg", {'<', '?', 'x', 'm', 'l'}},
                 {"pdf", {'%', 'P', 'D', 'F', '-'}}};
  for (const char* kind : kKinds)
    for (const auto& f : formats) {
      const std::string out = scratch(std::string(kind) + "." + f.ext);
      const Result r = dispc("render " + input(kind) + " -o " + out);
      EXPECT_EQ(r.code, 0) << kind << " " << f.ext << "\n" << r.err;
      const Bytes bytes = readBytes(out);
      EXPECT_TRUE(bytes.size() > f.magic.size() && std::equal(f.magic.begin(), f.magic.end(), bytes.begin()))
          << kind << " " << f.ext;
    }
  // The SVG is the drawing as vectors: the model's outlines are paths.
  EXPECT_TRUE(contains(readText(scratch("sot23.dispc.svg")), "<path"));
}

TEST(DispcRender, FitCentresTheBoundingBoxWithinTheMargin) {
  // 2.9 x 2.4 into 800 x 600 less a 30-pel margin: the height decides.
  const Result fitted = dispc("render " + input("sot23.dispc") + " -o " + scratch("fit.png"));
  EXPECT_TRUE(contains(fitted.out, "800 x 600 pels, scale 225 pels per unit, offset 400,300, y up"))
      << fitted.out;
  // A scale alone keeps the box centred; the offset replaces that.
  const Result scaled = dispc("render " + input("sot23.dispc") + " -o " + scratch("s.png") + " --scale 100");
  EXPECT_TRUE(contains(scaled.out, "scale 100 pels per unit, offset 400,300, y up")) << scaled.out;
  const Result placed = dispc("render " + input("graphics.dispc") + " -o " + scratch("p.png") +
                              " --size 320x200 --scale 0.5 --offset 10,-20");
  EXPECT_TRUE(contains(placed.out, "320 x 200 pels, scale 0.5 pels per unit, offset 10,-20, y down"))
      << placed.out;
  const kcPelBuffer<unsigned char> image = kfReadPng(scratch("p.png"));
  EXPECT_EQ(image.width(), 320);
  EXPECT_EQ(image.height(), 200);
}

TEST(DispcRender, SmdIsDrawnYUpUnlessToldOtherwise) {
  // Pin 3 stands above the body in the package drawing; its left edge lands
  // at x = 400 - 0.2 * 225 = 355, 30 to 154 pels from the top when y is up.
  const std::string up = scratch("up.png"), down = scratch("down.png");
  ASSERT_EQ(dispc("render " + input("sot23.dispc") + " -o " + up).code, 0);
  ASSERT_EQ(dispc("render " + input("sot23.dispc") + " -o " + down + " --y down").code, 0);
  const kcPelBuffer<unsigned char> a = kfReadPng(up), b = kfReadPng(down);
  EXPECT_TRUE(lit(a, 353, 357, 90, 90));
  EXPECT_FALSE(lit(a, 353, 357, 510, 510));
  EXPECT_FALSE(lit(b, 353, 357, 90, 90));
  EXPECT_TRUE(lit(b, 353, 357, 510, 510));
}

TEST(DispcRender, LayerChoosesTheRecordsPlayed) {
  // One client unit a pel: the main layer's rectangle has its left edge at
  // x 60, the overlay's dashed search area at x 20, the cross recorded for
  // both layers its upper arm at (200, 130).
  const struct {
    const char* layer;
    bool main, overlay;
  } cases[] = {{"main", true, false}, {"overlay", false, true}, {"both", true, true}};
  for (const auto& c : cases) {
    const std::string out = scratch(std::string(c.layer) + ".png");
    const Result r = dispc("render " + input("sketch.dispc") + " -o " + out +
                           " --size 400x300 --scale 1 --offset 0,0 --layer " + c.layer);
    ASSERT_EQ(r.code, 0) << r.err;
    const kcPelBuffer<unsigned char> image = kfReadPng(out);
    EXPECT_EQ(lit(image, 58, 62, 140, 140), c.main) << c.layer;
    EXPECT_EQ(lit(image, 19, 21, 100, 120), c.overlay) << c.layer;
    EXPECT_TRUE(lit(image, 199, 201, 130, 130)) << c.layer;
  }
}

TEST(DispcRender, BackgroundImageGivesTheSizeAndShowsThrough) {
  const std::string background = scratch("background.png");
  kcPelBuffer<unsigned char> grey(200, 100);
  grey.fill(77);
  kfWritePng(grey, background);
  const std::string out = scratch("over.png");
  const Result r = dispc("render " + input("sketch.dispc") + " -o " + out + " --background " + background);
  ASSERT_EQ(r.code, 0) << r.err;
  const kcPelBuffer<unsigned char> image = kfReadPng(out);
  EXPECT_EQ(image.width(), 200);
  EXPECT_EQ(image.height(), 100);
  EXPECT_EQ(image.get(1, 1), 77);

  const Result missing =
      dispc("render " + input("sketch.dispc") + " -o " + out + " --background " + scratch("no.png"));
  EXPECT_EQ(missing.code, 1);
  EXPECT_TRUE(contains(missing.err, "cannot read " + scratch("no.png") + ": No such file")) << missing.err;
}

TEST(DispcSynth, ImagesHaveTheRequestedSize) {
  const std::string pgm = scratch("pad.pgm"), png = scratch("pad.png");
  ASSERT_EQ(dispc("synth " + input("pad.dispc") + " -o " + pgm + " --size 300x200").code, 0);
  const Bytes bytes = readBytes(pgm);
  const std::string header = "P5\n300 200\n255\n";
  ASSERT_EQ(bytes.size(), header.size() + 300 * 200);
  EXPECT_TRUE(std::equal(header.begin(), header.end(), bytes.begin()));
  ASSERT_EQ(dispc("synth " + input("pad.dispc") + " -o " + png).code, 0);
  const kcPelBuffer<unsigned char> image = kfReadPng(png);
  EXPECT_EQ(image.width(), 800);
  EXPECT_EQ(image.height(), 600);
}

TEST(DispcSynth, PelSizeSetsTheScale) {
  // 100 pels per mm, the model centred in 400 x 300: the body's grey in the
  // middle, pin 3's 92 pels above, the background in a corner.
  const std::string out = scratch("sot23.png");
  const Result r = dispc("synth " + input("sot23.dispc") + " -o " + out + " --size 400x300 --pel 0.01");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_TRUE(contains(r.out, "scale 100 pels per unit, offset 200,150, y up")) << r.out;
  const kcPelBuffer<unsigned char> image = kfReadPng(out);
  EXPECT_EQ(image.get(200, 150), kcSMDColors::colorToGrayScale(kcColor::dkGrey));
  EXPECT_EQ(image.get(200, 150 - 92), kcSMDColors::colorToGrayScale(kcColor::white));
  EXPECT_EQ(image.get(2, 2), kcSMDColors::colorToGrayScale(kcColor::black));
}

// --- validate ---

TEST(DispcValidate, ToleranceUnderAScale) {
  // The body is 2.9 +- 0.1 long and 1.3 +- 0.1 wide; the leads hold more.
  const struct {
    const char* scale;
    int code;
    std::vector<std::string> listed;
  } cases[] = {
      {"1", 0, {}},
      {"1.02", 0, {}},
      {"1.05",
       1,
       {"  segment 1 (vertex 0 to 1): length 3.045, allowed 2.8 to 3 (nominal 2.9)",
        "  segment 3 (vertex 2 to 3): length 3.045, allowed 2.8 to 3 (nominal 2.9)"}},
      {"0.9",
       1,
       {"  segment 0 (vertex 3 to 0): length 1.17, allowed 1.2 to 1.4 (nominal 1.3)",
        "  segment 1 (vertex 0 to 1): length 2.61, allowed 2.8 to 3 (nominal 2.9)",
        "  segment 2 (vertex 1 to 2): length 1.17, allowed 1.2 to 1.4 (nominal 1.3)",
        "  segment 3 (vertex 2 to 3): length 2.61, allowed 2.8 to 3 (nominal 2.9)"}},
  };
  for (const auto& c : cases) {
    const Result r = dispc("validate " + input("sot23.dispc") + " --scale " + c.scale);
    EXPECT_EQ(r.code, c.code) << c.scale;
    std::vector<std::string> listed;
    for (const std::string& line : lines(r.out))
      if (line.rfind("  segment", 0) == 0) listed.push_back(line);
    EXPECT_EQ(listed, c.listed) << c.scale;
    EXPECT_TRUE(contains(r.out, "poly 3 \"pin 3\": valid\n")) << c.scale;
    if (c.code) {
      EXPECT_TRUE(contains(r.err, "validation failed: " + std::to_string(c.listed.size()) +
                                      " segments out of tolerance under scale " + c.scale))
          << r.err;
    }
  }
}

kcSMDGDPoly polyOf(const std::wstring& name, const std::vector<kcVector<2>>& points) {
  kcSMDGDPoly p(name);
  for (const kcVector<2>& v : points) p << kcSMDGDPolyVertex(v, 0.5, 0.5, -1);
  p.close();
  return p;
}

// The file with every stored copy of the number from replaced by to.
Bytes edited(const kcDispcFileContent& content, double from, double to) {
  Bytes bytes = kfSaveBytes(content);
  std::uint8_t a[8], b[8];
  kfStoreLE(a, from);
  kfStoreLE(b, to);
  for (auto at = std::search(bytes.begin(), bytes.end(), a, a + 8); at != bytes.end();
       at = std::search(at + 8, bytes.end(), a, a + 8))
    std::copy(b, b + 8, at);
  return bytes;
}

TEST(DispcValidate, EditedOutlineIsNamedWithWhereItFails) {
  // A pentagon whose vertex 3 (1.5, 4.5) moved to (1.5, -1.5) crosses its
  // first side when that vertex is added; a quadrilateral whose vertex 3
  // (-1.75, 4.25) moved to (4.75, 4.25) crosses itself only when closed.
  const kcSMDGDPoly notch = polyOf(L"notch", {{0, 0}, {4, 0}, {4, 4}, {1.5, 4.5}, {0, 3}});
  const kcSMDGDPoly tie = polyOf(L"tie", {{0, 0}, {4, 0}, {0, 4}, {-1.75, 4.25}});
  kcSMDGDModel model(L"edited");
  model << kcSMDGDPoly::rectangle(2, 2, kcVector<2>(-5, 0)) << notch << tie;
  const std::string crossing = "Two or more poly segments cross.";
  const struct {
    kcDispcFileContent content;
    double from, to;
    std::string reported;
  } cases[] = {
      {model, 4.5, -1.5, "model poly 1: poly \"notch\" does not validate at vertex 3: " + crossing},
      {model, -1.75, 4.75,
       "model poly 2: poly \"tie\" does not validate at the closing segment: " + crossing},
      {notch, 4.5, -1.5, "poly \"notch\" does not validate at vertex 3: " + crossing},
  };
  // The library refuses the file and names the poly and where a fresh edit
  // stops; every command reports it so.
  for (const auto& c : cases) {
    const Bytes bytes = edited(c.content, c.from, c.to);
    ASSERT_THROW((void)kfLoadBytes(bytes), kcArchive::Corrupt) << c.reported;
    const std::string path = scratch("edited.dispc");
    writeBytes(path, bytes);
    for (const char* command : {"validate", "info"}) {
      const Result r = dispc(std::string(command) + " " + path);
      EXPECT_EQ(r.code, 1) << c.reported;
      EXPECT_TRUE(contains(r.err, path + ": damaged file: corrupt archive: " + c.reported)) << r.err;
    }
  }
}

// --- damaged files ---

TEST(DispcDamage, TruncatedFilesAreReportedDamaged) {
  for (const char* kind : kKinds) {
    const Bytes whole = readBytes(input(kind));
    for (const std::size_t size : {std::size_t{5}, std::size_t{10}, whole.size() / 2, whole.size() - 1}) {
      const std::string path = scratch("cut.dispc");
      writeBytes(path, Bytes(whole.begin(), whole.begin() + static_cast<long>(size)));
      for (const std::string& command :
           std::vector<std::string>{"info", "dump", "render -o " + scratch("x.png"), "validate"}) {
        const Result r = dispc(command + " " + path);
        // validate refuses a sketch or a list only once it has read it whole.
        EXPECT_EQ(r.code, 1) << kind << " cut to " << size << ": " << command;
        EXPECT_TRUE(contains(r.err, "dispc: " + path + ": damaged file: corrupt archive")) << r.err;
        EXPECT_EQ(r.out, "") << kind << " cut to " << size << ": " << command;
      }
    }
  }
}

TEST(DispcDamage, FlippedBitsNeverCrashTheTool) {
  // Bits spread over each file: a flip may leave a valid file (a coordinate
  // changed) or a damaged one, never a crash or a usage error.
  constexpr std::size_t kFlips = 24;
  for (const char* kind : kKinds) {
    const Bytes whole = readBytes(input(kind));
    for (std::size_t k = 0; k < kFlips; ++k) {
      const std::size_t bit = (k * whole.size() * 8) / kFlips + k % 8;
      Bytes flipped = whole;
      flipped[bit / 8] ^= static_cast<std::uint8_t>(1u << (bit % 8));
      const std::string path = scratch("flipped.dispc");
      writeBytes(path, flipped);
      const std::string command = k % 3 == 0 ? "info" : k % 3 == 1 ? "dump" : "render -o " + scratch("x.svg");
      const Result r = dispc(command + " " + path);
      EXPECT_TRUE(r.code == 0 || r.code == 1) << kind << " bit " << bit << ": " << r.code << "\n" << r.err;
      if (r.code == 1) {
        EXPECT_EQ(lines(r.err).size(), 1u) << r.err;
      }
    }
  }
}

TEST(DispcDamage, KnownDamageIsNamed) {
  const Bytes sketch = readBytes(input("sketch.dispc"));
  const std::string name = "kc_UISketchOpRect";
  const auto at = std::search(sketch.begin(), sketch.end(), name.begin(), name.end());
  ASSERT_NE(at, sketch.end());
  const struct {
    std::size_t byte;
    std::string says;
  } cases[] = {
      {0, "damaged file: corrupt archive: not a dispc file"},
      {8, "unknown archive version in dispc/dispcfile"},
      {9, "damaged file: corrupt archive: unknown kind of dispc file"},
      {static_cast<std::size_t>(at - sketch.begin()) + 3, "damaged file: corrupt archive: "},
  };
  for (const auto& c : cases) {
    Bytes flipped = sketch;
    flipped[c.byte] ^= 0x40;
    const std::string path = scratch("named.dispc");
    writeBytes(path, flipped);
    const Result r = dispc("info " + path);
    EXPECT_EQ(r.code, 1) << c.byte;
    EXPECT_EQ(r.err.rfind("dispc: " + path + ": ", 0), 0u) << r.err;
    EXPECT_TRUE(contains(r.err, c.says)) << r.err;
  }
  const Result missing = dispc("info " + scratch("missing.dispc"));
  EXPECT_EQ(missing.code, 1);
  EXPECT_TRUE(contains(missing.err, "cannot read " + scratch("missing.dispc") + ": No such file"))
      << missing.err;
}

}  // namespace
