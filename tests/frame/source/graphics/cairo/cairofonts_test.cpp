#include "frame/source/graphics/cairo/cairofontcollection.h"
#include "gui/drawing/irealtimetranslator.h"
#include "gui/drawing/ufontcollection.h"
#include "gui/drawing/ufontfacecache.h"
#include "pluginterfaces/filesystem/ipath.h"
#include "tests/frame/source/graphics/cairo/canvas.h"
#include "tests/support/testfolder.h"
#include <cmath>
#include <fstream>
#include <sstream>

using namespace Tessarine;
using namespace Tessarine::Graphics;
using namespace Tessarine::Testing;

namespace {
constexpr const tchar* kInstalled = u"DejaVu Sans";

UFont font(int32_t size, uint32_t style = 0) {
    UFont result(kInstalled, size, style);
    result.setColor(UColor(0xFF000000));
    return result;
}

double width(int32_t size, const tchar* text) {
    double result = -1;
    const UFont measured = font(size);
    measured.getGraphicsObject()->getStringWidth(text, result);
    return result;
}

/** Paths that a test names. */
class Files : public FObject, public IFileIterator {
public:
    FORWARD_REFCOUNT(FObject)
    explicit Files(std::vector<std::string> paths) : paths(std::move(paths)) {}
    int32_t queryInterface(const char* iid, void** obj) override { return FObject::queryInterface(iid, obj); }
    IPath* next() override { return at < paths.size() ? new Path(paths[at++]) : nullptr; }

private:
    class Path : public FObject, public IPath {
    public:
        FORWARD_REFCOUNT(FObject)
        explicit Path(const std::string& path) { text.fromUTF8(path.c_str()); }
        int32_t queryInterface(const char* iid, void** obj) override { return FObject::queryInterface(iid, obj); }
        int32_t getFullPath(IString* path) override { return path->setText16(text.text16()), kResultOk; }

    private:
        FString text;
    };

    std::vector<std::string> paths;
    size_t at = 0;
};

/** The file of an installed font. */
std::string fileOf(const char* name) {
    FcPattern* wanted = FcNameParse(reinterpret_cast<const FcChar8*>(name));
    FcConfigSubstitute(nullptr, wanted, FcMatchPattern);
    FcDefaultSubstitute(wanted);
    FcResult result;
    FcPattern* found = FcFontMatch(nullptr, wanted, &result);
    FcChar8* path = nullptr;
    FcPatternGetString(found, FC_FILE, 0, &path);
    std::string file(reinterpret_cast<const char*>(path));
    FcPatternDestroy(wanted);
    FcPatternDestroy(found);
    return file;
}

std::string contentOf(const std::string& file) {
    std::ostringstream read;
    read << std::ifstream(file, std::ios::binary).rdbuf();
    return read.str();
}

/** A collection of a configuration without fonts. */
OPtr<IFontCollection> newCollection(const TemporaryFolder& folder) {
    const std::string path = (folder.path / "fonts.conf").string();
    std::ofstream(path) << "<fontconfig></fontconfig>";
    const char* before = getenv("FONTCONFIG_FILE");
    const std::string kept(before ? before : "");
    setenv("FONTCONFIG_FILE", path.c_str(), 1);
    OPtr<IFontCollection> fonts(new CairoFontCollection);
    before ? setenv("FONTCONFIG_FILE", kept.c_str(), 1) : unsetenv("FONTCONFIG_FILE");
    return fonts;
}

/** Makes the maker's name of a font's table of names a Japanese family, and, if wanted, all others German. */
void translateNames(std::string& content, bool german) {
    constexpr size_t kRecord = 12, kPlatform = 0, kLanguage = 4, kKind = 6;
    const auto get = [&](size_t at) { return uint8_t(content[at]) << 8 | uint8_t(content[at + 1]); };
    const auto set = [&](size_t at, int32_t value) {
        content[at] = char(value >> 8);
        content[at + 1] = char(value);
    };
    const size_t entry = content.find("name") + 8, table = size_t(get(entry)) << 16 | size_t(get(entry + 2));
    for (int32_t index = 0; index < get(table + 2); ++index) {
        const size_t record = table + 6 + size_t(index) * kRecord;
        const bool windows = get(record + kPlatform) == 3;
        if (windows && get(record + kKind) == 8) {
            set(record + kKind, 1);
            set(record + kLanguage, 0x411);
        } else if (german)
            set(record + kLanguage, windows ? 0x407 : 2);
    }
}
}  // namespace

class Fonts : public Drawing {
protected:
    void SetUp() override {
        ASSERT_GE(UFontCollection::getIndexByName(kInstalled), 0) << "the font of these tests isn't installed";
    }
};

TEST_F(Fonts, AreFoundByNamesThatAreInstalledOrTold) {
    const struct {
        const tchar* name;
        bool found, listed;
    } rows[] = {
        {kInstalled,          true,  true },
        {u"DejaVu Sans Mono", true,  true },
        {u"Lucida Grande",    true,  false},
        {u"Monaco",           true,  false},
        {u"Times Roman",      true,  false},
        {u"No Such Font",     false, false},
        {u"sans-serif",       false, false},
        {u"",                 false, false},
        {nullptr,             false, false},
    };
    IFontCollection* fonts = factory()->getFontCollection();
    for (const auto& row : rows) {
        const OPtr<IFontDescription> found(fonts->getFontByName(row.name));
        EXPECT_EQ(found != nullptr, row.found) << FString(row.name).text8();
        EXPECT_EQ(UFontCollection::getIndexByName(row.name) >= 0, row.listed) << FString(row.name).text8();
        if (found) {
            EXPECT_TRUE(ConstString(found->getName()) == ConstString(row.name));
            EXPECT_EQ(found->createFace(0, 0), nullptr);
            EXPECT_EQ(found->createFace(1000, 0), nullptr);
            EXPECT_EQ(found->createFace(NAN, 0), nullptr);
        }
    }
    EXPECT_EQ(fonts->getFontByIndex(fonts->countFonts()), nullptr);
    UFont told(u"Monaco", 12);
    EXPECT_TRUE(UFontCollection::setupFontByName(told, u"Geneva"));
    EXPECT_TRUE(told.getName() == ConstString(u"Geneva"));
    EXPECT_FALSE(UFontCollection::setupFontByName(told, u"No Such Font"));
}

TEST_F(Fonts, AreMeasuredAlikeOnAnySurface) {
    // lengths grow with the size, without steps
    EXPECT_NEAR(width(90, u"Wave Town"), 10 * width(9, u"Wave Town"), 0.1);
    EXPECT_EQ(width(12, u""), 0);
    EXPECT_GT(width(12, u"a "), width(12, u"a"));
    EXPECT_NEAR(width(12, u"a\nb"), width(12, u"a b"), 1e-9);
    EXPECT_GT(width(12, u"\xD800 lone"), 0);
    FontMetrics metrics;
    for (const int32_t size : {7, 9, 12, 33}) {
        const UFont measured = font(size);
        measured.getGraphicsObject()->getMetrics(metrics);
        EXPECT_EQ(metrics.ascent, std::ceil(size * 0.9282 - 0.01)) << size;  // of the font's own tables
        EXPECT_EQ(metrics.descent, std::ceil(size * 0.2358 - 0.01)) << size;
        EXPECT_GE(metrics.leading, 0);
    }
    double widths[2] = {};
    for (const bool smooth : {false, true}) {
        const Canvas canvas(9, 9);
        const UFont drawn = font(11, UFont::kBold | UFont::kItalic);
        canvas.device->setPen(UPen(UColor(0xFF000000), 1, UPen::kSolid, smooth));
        canvas.device->setFont(drawn);
        canvas.device->drawString(u"Wave", UPoint(0, 9));  // what is measured next has this smoothing
        drawn.getGraphicsObject()->getStringWidth(u"Wave Town", widths[smooth]);
        UPhysicalDrawDevice::setFactory(nullptr);
    }
    EXPECT_EQ(widths[0], widths[1]);
    const std::u16string endless(3'000'000, u'M');
    EXPECT_GT(width(900, endless.c_str()), 500'000);
}

TEST_F(Fonts, WithoutAFaceThereAreEstimates) {
    UTextMetrics metrics;
    URect extents;
    const UFont none(u"No Such Font", 9);
    UDrawDevice::getTextMetrics(none, metrics);
    EXPECT_EQ(std::tie(metrics.height, metrics.ascent, metrics.descent, metrics.leading), std::make_tuple(10, 7, 3, 3));
    UDrawDevice::getTextExtents(none, u"four", extents);
    EXPECT_TRUE(extents == URect(0, 0, 36, 10));
    UDrawDevice::getTextExtents(font(12), u"four", extents);
    EXPECT_TRUE(extents == URect(0, 0, int32_t(std::ceil(width(12, u"four"))), 15));
}

TEST_F(Fonts, StandAsTheyAreAligned) {
    const UFont used = font(12);  // 12 above the baseline and 3 below, capitals 9 high
    const int32_t advance = int32_t(std::ceil(width(12, u"H")));
    const struct {
        int32_t flags, inset;
        double baseline, left;
    } rows[] = {
        {kTextLeft | kTextTop,    0, 12, 0                 },
        {kTextLeft | kTextBottom, 0, 37, 0                 },
        {kTextLeft,               0, 24, 0                 }, // 12.25 + 12
        {kTextLeft,               5, 24, 5                 },
        {kTextRight,              0, 24, 60.0 - advance    },
        {kTextRight,              5, 24, 55.0 - advance    },
        {0,                       0, 24, 30 - advance / 2.0},
        {0,                       7, 24, 30 - advance / 2.0},
    };
    for (const double scale : {1.0, 2.0})
        for (const auto& row : rows) {
            const Canvas canvas(60, 40, scale);
            canvas.device->setFont(used);
            canvas.device->drawString(u"H", URect(0, 0, 60, 40), row.flags, row.inset);
            const URect ink = canvas.ink();
            EXPECT_NEAR(ink.bottom / scale, row.baseline, scale == 1 ? 0 : 0.5) << row.flags << " at " << scale;
            EXPECT_NEAR(ink.left / scale, row.left + 1, 1.01) << row.flags << " at " << scale;
            EXPECT_LE(ink.right, 60 * scale);
        }
    const Canvas canvas(60, 40);
    canvas.device->setFont(used);
    canvas.device->drawString(u"H", UPoint(20, 30));
    EXPECT_EQ(canvas.ink().bottom, 30);
    EXPECT_EQ(canvas.ink().getHeight(), 9);
}

TEST_F(Fonts, NoSizeBreaksTheFontOrTheDevice) {
    const TransformMatrix matrices[] = {
        {900, 0,   0,   900, 0, 0},
        {500, 0,   0,   0.5, 0, 0},
        {1,   900, 0.1, 1,   0, 0}
    };
    int32_t fresh = 13;  // a size nobody has asked for
    for (const TransformMatrix& matrix : matrices)
        for (const double size : {12.0, 500.0}) {
            const Canvas canvas(60, 40);
            const UFont next = font(++fresh, UFont::kBold | UFont::kItalic);
            const OPtr<IFontDescription> description(factory()->getFontCollection()->getFontByName(kInstalled));
            const OPtr<IFontFace> face(description->createFace(size, kFontBold | kFontItalic));
            canvas.boundary->setDrawAntialiased(1);
            canvas.boundary->saveGlobalState();
            canvas.boundary->concatTransformMatrix(matrix);
            canvas.boundary->drawString(u"Hello", {0, 0, 9, 9}, face, 0xFF000000, kAlignLeft | kAlignTop);
            canvas.boundary->restoreGlobalState();
            canvas.boundary->clearRect({0, 0, 60, 40});
            EXPECT_TRUE(canvas.ink().isEmpty());
            canvas.device->setFont(next);
            canvas.device->drawString(u"H", UPoint(9, 30));
            EXPECT_GE(canvas.ink().getHeight(), 9) << matrix.xx << " " << size;
        }
}

TEST_F(Fonts, SmoothingIsTheDevices) {
    for (const bool smooth : {false, true}) {
        const Canvas canvas(60, 20);
        canvas.device->setBrush(UBrush(UColor(0xFFFFFFFF), smooth));
        canvas.device->setFont(font(12));
        canvas.device->drawString(u"Oxo", UPoint(2, 15));
        const std::string all = ::testing::PrintToString(canvas.picture());
        EXPECT_EQ(all.find('?') != std::string::npos, smooth);
        EXPECT_NE(all.find('P'), std::string::npos);
    }
}

TEST_F(Fonts, AreTranslatedWhileTheyAreDrawn) {
    struct Doubler : IRealtimeTranslator {
        const tchar* translate(const tchar* text) override { return (kept = std::u16string(text) + text).c_str(); }
        int32_t getStringWidth(const UFont&, const tchar* text) override {
            return 100 + int32_t(std::ceil(width(12, translate(text))));
        }
        std::u16string kept;
    } doubler;
    const auto drawn = [](const tchar* text) {
        const Canvas canvas(60, 40);
        canvas.device->setFont(font(12));
        canvas.device->drawString(text, URect(0, 0, 60, 20), kTextRight, 0);
        canvas.device->drawString(text, UPoint(2, 35));
        return canvas.picture();
    };
    const Picture plain = drawn(u"HoHo");
    IRealtimeTranslator::gInstance = &doubler;
    EXPECT_EQ(drawn(u"Ho"), plain);
    EXPECT_EQ(UDrawDevice::getStringWidth(font(12), u"Ho"), 100 + int32_t(std::ceil(width(12, u"HoHo"))));
    IRealtimeTranslator::gInstance = nullptr;
}

TEST_F(Fonts, ScriptsAreShapedAndRunTheirWay) {
    EXPECT_LT(width(20, u"\u0628\u0628\u0628"), 2.9 * width(20, u"\u0628"));  // letters join
    const auto leftOf = [](const tchar* text) {
        const Canvas canvas(60, 20);
        canvas.device->setFont(font(12));
        canvas.device->drawString(text, UPoint(2, 15));
        Picture result = canvas.picture();
        for (std::string& row : result)
            row.resize(6);
        return result;
    };
    EXPECT_EQ(leftOf(u"\u0628\u0628 l"), leftOf(u"l \u0628"));  // what comes last stands on the left
}

TEST_F(Fonts, ApplicationsBringTheirOwn) {
    TemporaryFolder folder;
    const auto path = [&folder](const char* name) { return (folder.path / name).string(); };
    const std::string file = fileOf("DejaVu Sans");
    std::ofstream(path("text.ttf")) << "no font";
    std::ofstream(path("broken.ttf"), std::ios::binary) << contentOf(file).substr(0, 5000);
    const OPtr<IFontCollection> fonts = newCollection(folder);

    EXPECT_EQ(fonts->countFonts(), 0u);
    const OPtr<IFontDescription> told(fonts->getFontByName(u"Monaco"));
    ASSERT_TRUE(told);
    EXPECT_EQ(told->createFace(12, 0), nullptr);  // there is none at all
    const OPtr<Files> none(new Files({path("text.ttf"), path("broken.ttf"), path("missing.ttf")}));
    EXPECT_EQ(fonts->registerFonts(none), kResultFalse);
    EXPECT_EQ(fonts->registerFonts(nullptr), kInvalidArgument);
    const OPtr<Files> one(new Files({path("text.ttf"), file}));
    EXPECT_EQ(fonts->registerFonts(one), kResultOk);
    EXPECT_EQ(fonts->countFonts(), 1u);
    const OPtr<IFontDescription> own(fonts->getFontByName(kInstalled));
    ASSERT_TRUE(own);
    const OPtr<IFontFace> face(own->createFace(12, 0));
    double measured = 0;
    face->getStringWidth(u"Wave Town", measured);
    EXPECT_NEAR(measured, width(12, u"Wave Town"), 1e-9);
}

TEST_F(Fonts, AreFoundByNamesInAnyLanguage) {
    TemporaryFolder folder;
    for (const bool german : {false, true}) {
        const std::string path = (folder.path / (german ? "german.ttf" : "english.ttf")).string();
        std::string content = contentOf(fileOf("DejaVu Sans"));
        translateNames(content, german);
        std::ofstream(path, std::ios::binary) << content;
        const OPtr<IFontCollection> fonts = newCollection(folder);
        const OPtr<Files> one(new Files({path}));
        EXPECT_EQ(fonts->registerFonts(one), kResultOk);
        ASSERT_EQ(fonts->countFonts(), 1u) << german;
        EXPECT_TRUE(ConstString(OPtr(fonts->getFontByIndex(0))->getName()) == ConstString(kInstalled)) << german;
        for (const tchar* name : {kInstalled, u"DejaVu fonts team"}) {
            const OPtr<IFontDescription> found(fonts->getFontByName(name));
            ASSERT_TRUE(found) << FString(name).text8() << german;
            EXPECT_TRUE(OPtr<IFontFace>(found->createFace(12, 0)));
        }
    }
}

TEST_F(Fonts, CacheIsEmptiedByTheFirstThatDoesntFit) {
    UFontFaceCache& cache = UFontFaceCache::instance();
    cache.empty();
    UFont first = font(10);
    IFontFace* face = first.getGraphicsObject();
    for (int32_t size = 11; size < 60; ++size)
        EXPECT_TRUE(cache.getFontFace(ConstString(kInstalled), size, 0));
    EXPECT_EQ(cache.count(), 50u);
    EXPECT_EQ(cache.getFontFace(ConstString(kInstalled), 10, 0), face);
    EXPECT_EQ(cache.getFontFace(ConstString(u"No Such Font"), 10, 0), nullptr);
    EXPECT_EQ(cache.count(), 50u);
    EXPECT_TRUE(cache.getFontFace(ConstString(kInstalled), 60, 0));
    EXPECT_EQ(cache.count(), 1u);
    EXPECT_EQ(first.getGraphicsObject(), face);  // its own reference
    EXPECT_NE(cache.getFontFace(ConstString(kInstalled), 10, 1), cache.getFontFace(ConstString(kInstalled), 10, 0));
    first.setSize(11);
    EXPECT_EQ(first.getGraphicsObject()->getHeight(), 11);
}
