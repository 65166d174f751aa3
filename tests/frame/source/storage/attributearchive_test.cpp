#include "base/cmunknown.h"
#include "collect/cmbuffer.h"
#include "collect/cmdate.h"
#include "collect/cmhashdictionary.h"
#include "collect/cmregexp.h"
#include "collect/cmstring.h"
#include "storage/fbinarchive.h"
#include "storage/fnewarchive.h"
#include "storage/fsimplearchive.h"
#include "storage/fxmlarchive.h"
#include "storage/fxmlobject.h"
#include "storednode.h"
#include <cstring>
#include <functional>
#include <limits>
#include <map>

namespace Tessarine {
IMPLEMENT_CLASS(StoredNode, CmObject)

namespace {
struct Binary {
    static constexpr const char* kEnding = ".bin";
    using Archive = FBinArchive;
    static bool save(Archive& archive) { return archive.save(); }
    static bool load(Archive& archive) { return archive.load(); }
    static bool saveBag(Archive& archive, const FAttributes& bag) { return archive.saveAttributes(bag); }
    static bool loadBag(Archive& archive, FAttributes& bag) { return archive.loadAttributes(bag); }
};
struct Xml {
    static constexpr const char* kEnding = ".xml";
    using Archive = FXmlArchive;
    static bool save(Archive& archive) { return archive.save("Test"); }
    static bool load(Archive& archive) { return archive.load("Test"); }
    static bool saveBag(Archive& archive, const FAttributes& bag) { return archive.saveAttributes("Test", bag); }
    static bool loadBag(Archive& archive, FAttributes& bag) { return archive.loadAttributes("Test", bag); }
};

/** Every kind of value, without objects. */
OPtr<FAttributes> fullBag() {
    OPtr<FAttributes> bag(new FAttributes);
    const OPtr<FAttributes> inner(new FAttributes);
    inner->set("x", INT64_MIN);
    char bytes[33];
    for (int32_t i = 0; i < 33; ++i)
        bytes[i] = static_cast<char>(i * 7);
    bag->set("int", 42);
    bag->set("float", 0.1);
    bag->set("tiny", std::numeric_limits<double>::denorm_min());
    bag->setString8("text", "a<b & \"c\"\rd");
    bag->setString16("wide", u"h\u00e9\u4e2d\U0001F600");
    bag->setString8("empty", "");
    bag->setString8("k<e>y", "");
    bag->setAttributes("bag", inner.get());
    bag->setBinary("bytes", bytes, 33);
    bag->queueInt("ints", 1);
    bag->queueInt("ints", -1);
    bag->queueFloat("floats", 1e300);
    bag->queueString16("texts", u"\u00fc");
    bag->queueString16("texts", u"plain");
    bag->queueAttributes("bags", inner.get());
    bag->queueAttributes("bags", inner.get());
    return bag;
}

OPtr<StoredNode> graph() {
    OPtr<StoredNode> top(new StoredNode(1));
    StoredNode* left = top->add(2);
    top->add(left->add(4));
    top->add(3);
    return top;
}

using Ids = std::map<uint64_t, uint64_t>;

/** XML with its ids counted from 1 in the order of their first appearance. */
std::string renumberedXml(const std::string& text, Ids& ids) {
    ids.clear();
    std::string result;
    for (size_t at = 0, next; at < text.size(); at = next) {
        next = std::min(text.find('"', at), text.size() - 1) + 1;
        const std::string piece = text.substr(at, next - at);
        const bool isID = piece.size() > 9 && piece.find_first_not_of("0123456789") == piece.size() - 1;
        result += isID ? std::to_string(ids.emplace(std::stoull(piece), ids.size() + 1).first->second) + '"' : piece;
    }
    return result;
}

/** The class and what it stores. */
std::string canonical(CmObject* object, Ids& ids) {
    FMemoryStream stream;
    FXmlArchive archive(&stream, true);
    archive.addRoot("o", object);
    EXPECT_TRUE(archive.save("T"));
    return renumberedXml(textOf(stream), ids);
}

std::string renumbered(const Xml&, const std::string& text, CmObject*) {
    Ids ids;
    return renumberedXml(text, ids);
}
std::string renumbered(const Binary&, std::string bytes, CmObject* root) {
    Ids ids, numbers;
    if (root)
        canonical(root, ids);
    for (size_t at = 0; at + 8 <= bytes.size(); ++at) {
        uint64_t id;
        std::memcpy(&id, bytes.data() + at, 8);
        if (!ids.contains(id))
            continue;
        const uint64_t number = numbers.emplace(id, numbers.size() + 1).first->second;
        std::memcpy(bytes.data() + at, &number, 8);
    }
    return bytes;
}

template <class Format>
class AttributeArchives : public testing::Test {
protected:
    using Archive = typename Format::Archive;
    ~AttributeArchives() override { EXPECT_EQ(StoredNode::living, 0) << "left behind"; }

    std::string saved(CmObject* root, FAttributes* bag = nullptr) {
        FMemoryStream stream;
        Archive archive(&stream, true);
        if (root)
            archive.addRoot("root", root);
        if (bag)
            archive.addGlobalRoot("bag", bag);
        EXPECT_TRUE(Format::save(archive));
        return renumbered(Format(), textOf(stream), root);
    }
    OPtr<CmObject> loaded(const std::string& bytes, FAttributes* bag = nullptr) {
        const OPtr<FMemoryStream> stream = streamOf(bytes);
        Archive archive(stream, false);
        EXPECT_TRUE(Format::load(archive));
        EXPECT_EQ(stream->tell(), stream->getSize() - (bytes.ends_with('\r') ? 1 : 0));
        EXPECT_TRUE(!bag || archive.getGlobalRoot("bag", bag));
        return OPtr<CmObject>(archive.getRoot("root"));
    }
};
using Formats = testing::Types<Binary, Xml>;
TYPED_TEST_SUITE(AttributeArchives, Formats);

TYPED_TEST(AttributeArchives, AreTheFilesThatTheyAlwaysWere) {
    const std::string bags = goldenFile(std::string("bag") + TypeParam::kEnding);
    EXPECT_EQ(this->saved(nullptr, fullBag().get()), bags);
    FAttributes bag;
    this->loaded(bags, &bag);
    EXPECT_EQ(this->saved(nullptr, &bag), bags);
    EXPECT_EQ(bag.getFloat("tiny"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(ConstString(bag.getString16("wide")), ConstString(u"h\u00e9\u4e2d\U0001F600"));

    const std::string objects = goldenFile(std::string("graph") + TypeParam::kEnding);
    EXPECT_EQ(this->saved(graph().get()), objects);
    const OPtr<CmObject> top = this->loaded(objects);
    EXPECT_EQ(this->saved(top), objects);

    std::string unknown = objects;
    for (size_t at = 0; (at = unknown.find("StoredNode", at)) != unknown.npos;)
        unknown.replace(at, 10, "AlienThing");
    const OPtr<CmObject> alien = this->loaded(unknown);
    EXPECT_EQ(this->saved(alien), unknown) << "what isn't known survives";
}

// Objects that come later in the file, or hold each other; of unknown classes too.
std::string object(const char* className, int32_t id, const std::string& content) {
    return std::string("<obj class='") + className + "' ID='" + std::to_string(id) + "'>" + content + "</obj>";
}
std::string refers(int32_t id) {
    return "<obj name='a' ID='" + std::to_string(id) + "'/>";
}
std::string holds(const char* name, const std::string& items) {
    return std::string("<list name='") + name + "' type='obj'>" + items + "</list>";
}
std::string item(int32_t id) {
    return "<item value='" + std::to_string(id) + "'/>";
}

TEST(XmlArchive, NeitherLeaksNorDanglesWhateverRefersToWhat) {
    const std::string plain = "<int name='number' value='5'/>", owns = "<int name='ownership' value='2'/>";
    const std::string node = object("StoredNode", 2, plain), root = object("X", 1, refers(2));
    // the class of the root "r", id 1, and the nodes that it keeps alive
    const std::tuple<const char*, std::string, const char*, int32_t> rows[] = {
        {"missing", "", nullptr, 0},
        {"an id twice: the first", object("StoredNode", 1, plain) + object("X", 1, ""), "StoredNode", 1},
        {"a later one is held", root + node, "FXmlInstance", 1},
        {"an earlier one too", node + root, "FXmlInstance", 1},
        {"over another one", object("Y", 3, refers(2)) + object("X", 1, refers(3)) + node, "FXmlInstance", 1},
        {"ring", root + object("Y", 2, holds("l", item(1))), "FXmlInstance", 0},
        {"ring with more", root + object("Y", 2, holds("l", item(1) + item(3))) + object("StoredNode", 3, plain),
         "FXmlInstance", 1},
        {"holds itself", object("X", 1, refers(1)), "FXmlInstance", 0},
        {"ring with a known one", root + object("CmArray", 2, owns + holds("obj", item(1))), "FXmlInstance", 0},
        {"array in itself", object("CmArray", 1, owns + holds("obj", item(1))), "CmArray", 0},
        {"over an unknown one", object("CmArray", 1, owns + holds("obj", object("X", 2, refers(1)))), "CmArray", 0},
        {"array in an unknown one", object("X", 1, object("CmArray", 2, owns + holds("obj", item(1)))), "FXmlInstance",
         0},
        {"bag in itself", object("Attributes", 1, holds("l", item(1)) + node), "FAttributes", 1},
        {"bags in a ring", object("Attributes", 1, refers(3) + node) + object("Attributes", 3, refers(1)),
         "FAttributes", 1},
        {"no id", "<obj class='StoredNode'><obj name='parent'/>" + plain + "</obj>", nullptr, 0},
    };
    for (const auto& [name, objects, className, kept] : rows) {
        SCOPED_TRACE(name);
        OPtr<CmObject> held;
        {
            const OPtr<FMemoryStream> stream =
                streamOf("<T><rootObjects><root name='r' ID='1'/></rootObjects>" + objects + "</T>");
            FXmlArchive archive(stream, false);
            EXPECT_TRUE(archive.load("T") && archive.isWhole());
            held = archive.getRoot("r");
        }
        EXPECT_STREQ(held ? held->isA() : nullptr, className);
        EXPECT_EQ(StoredNode::living, kept);
        held = nullptr;
        EXPECT_EQ(StoredNode::living, 0);
    }
}

/** However long: each holds the next one, or the one before, only by its id. */
TEST(XmlArchive, ChainsOfBagsGoOneByOne) {
    for (const char* className : {"X", "Attributes"}) {
        for (const int32_t step : {1, -1}) {
            std::string text = "<T><rootObjects><root name='r' ID='1'/><root name='q' ID='100000'/></rootObjects>";
            for (int32_t id = 1; id <= 100000; ++id)
                text += object(className, id, refers(id + step));
            const OPtr<FMemoryStream> stream =
                streamOf(text + object("StoredNode", 100001, "<int name='number' value='1'/>") + "</T>");
            {
                FXmlArchive archive(stream, false);
                EXPECT_TRUE(archive.load("T"));
                EXPECT_EQ(StoredNode::living, step > 0 ? 1 : 0);
            }
            EXPECT_EQ(StoredNode::living, 0);
        }
    }
}

/** Each holds the next one twice, in itself and by its id. */
TEST(XmlArchive, BagsThatAreSharedAreNotUnfolded) {
    std::string bags;
    for (int32_t id = 64; id > 0; --id)
        bags = object("Attributes", id, bags + (id < 64 ? refers(id + 1) : ""));
    const OPtr<FMemoryStream> stream =
        streamOf("<T><rootObjects><root name='r' ID='1'/></rootObjects>" + bags + "</T>");
    FMemoryStream again;
    FXmlArchive archive(stream, false), writer(&again, true);
    ASSERT_TRUE(archive.load("T"));
    const OPtr<CmObject> root(archive.getRoot("r", "FAttributes"));
    writer.addRoot("r", root.get());
    EXPECT_TRUE(writer.save("T"));
    EXPECT_LT(again.getSize(), 1000000);
}

TYPED_TEST(AttributeArchives, TellWhatFailsAndGoOn) {
    Errors errors;
    const FAttributeArchiveErrorHookScope scope(&errors);
    const OPtr<StoredNode> top(new StoredNode(1));
    top->add(-1);
    FMemoryStream stream;
    typename TypeParam::Archive archive(&stream, true);
    archive.addRoot("root", top.get());
    EXPECT_FALSE(TypeParam::save(archive));
    top->children[0]->number = 13;
    stream.setSize(0);
    EXPECT_TRUE(TypeParam::save(archive));
    stream.rewind();
    typename TypeParam::Archive reader(&stream, false);
    EXPECT_FALSE(TypeParam::load(reader));
    EXPECT_TRUE(OPtr<CmObject>(reader.getRoot("root", "StoredNode"))) << "with a hole";
    EXPECT_EQ(errors.heard, "-100StoredNode -99StoredNode ");
}

/** Makes its child whenever it is stored, for the bag alone. */
class ChildMaker : public StoredNode {
public:
    using StoredNode::StoredNode;
    bool storeAttributes(FAttributes& attributes) const override {
        return attributes.set("number", number) && attributes.queueObject("children", new StoredNode(-number), true);
    }
};

TYPED_TEST(AttributeArchives, TellObjectsApartThatAreMadeToBeStored) {
    const OPtr<StoredNode> top(new StoredNode(1));
    for (int32_t i = 0; i < 4; ++i)
        top->add(OPtr<StoredNode>(new ChildMaker(-20 - i)));
    FMemoryStream stream;
    typename TypeParam::Archive archive(&stream, true), reader(&stream, false);
    archive.addRoot("root", top.get());
    EXPECT_TRUE(TypeParam::save(archive));
    stream.rewind();
    EXPECT_TRUE(TypeParam::load(reader));
    const OPtr<CmObject> root(reader.getRoot("root", "StoredNode"));
    std::string numbers;
    for (StoredNode* maker : static_cast<StoredNode*>(root.get())->children)
        for (StoredNode* made : maker->children)
            numbers += std::to_string(made->number) + " ";
    EXPECT_EQ(numbers, "20 21 22 23 ");
}

TYPED_TEST(AttributeArchives, NestToABound) {
    for (const int32_t depth : {FAttributeArchiveBase::kMaxDepth, FAttributeArchiveBase::kMaxDepth + 1}) {
        const bool good = depth == FAttributeArchiveBase::kMaxDepth;
        FMemoryStream stream;
        FAttributes outer, back;
        FAttributes* inner = &outer;
        for (int32_t level = 1; level < depth; ++level) {
            const OPtr<FAttributes> next(new FAttributes);
            level % 2 ? inner->setAttributes("m", next.get()) : inner->queueAttributes("m", next.get());
            inner = next;
        }
        typename TypeParam::Archive archive(&stream, true);
        EXPECT_EQ(TypeParam::saveBag(archive, outer), good);
        stream.rewind();
        typename TypeParam::Archive reader(&stream, false);
        EXPECT_TRUE(!good || TypeParam::loadBag(reader, back));
    }
}

TYPED_TEST(AttributeArchives, CutOffIsNeverWhole) {
    const OPtr<StoredNode> top = graph();
    const std::string all = this->saved(top.get(), fullBag().get());
    for (size_t length = 0; length + 1 < all.size(); ++length) {
        const OPtr<FMemoryStream> stream = streamOf(all.substr(0, length));
        typename TypeParam::Archive archive(stream, false);
        bool whole = TypeParam::load(archive);
        if constexpr (std::is_same_v<TypeParam, Xml>)
            whole = archive.isWhole();
        EXPECT_FALSE(whole) << length;
    }
}

TYPED_TEST(AttributeArchives, WriteNothingOfWhatCannotBeStored) {
    FAttributes bag, back;
    int32_t target = 0;
    using Value = FAttributeValue;
    auto* pointer = new FStringIDAttribute("pointer");
    pointer->setPointer(&target);
    auto* transient = new FStringIDAttribute("transient");
    transient->setLong(1);
    transient->keep(Value::kTransient);
    const OPtr<FXmlReference> nothing(new FXmlReference(0));
    EXPECT_TRUE(bag.addAttribute(pointer) && bag.addAttribute(new FStringIDAttribute("empty")) &&
                bag.addAttribute(transient) && bag.setObject("nothing", nothing.get()));
    bag.queueObject("list", nothing.get(), false);
    FMemoryStream stream;
    typename TypeParam::Archive archive(&stream, true), reader(&stream, false);
    EXPECT_TRUE(TypeParam::saveBag(archive, bag));
    stream.rewind();
    EXPECT_TRUE(TypeParam::loadBag(reader, back));
    EXPECT_EQ(back.countAttributes(), 2) << "the transient one and the empty list";
    EXPECT_EQ(back.getInt("transient"), 1);
    EXPECT_EQ(back.countQueueItems("list"), 0);
}

std::string number(int64_t value, int32_t size) {
    return {reinterpret_cast<const char*>(&value), static_cast<size_t>(size)};
}
std::string attribute(int64_t type, const std::string& value) {
    return number(2, 4) + std::string("k\0", 2) + number(type, 2) + value;
}

TEST(BinArchive, TakesOnlyWhatIsThere) {
    const std::string one = number(1, 4), seven = number(7, 8);
    // one bag, whether it loads, its attributes, and the bytes that aren't read
    const std::tuple<const char*, std::string, bool, int32_t, int64_t> rows[] = {
        {"a type without value", number(2, 4) + attribute(0x4000, "") + attribute(1, seven), true, 1, 0},
        {"a pointer", number(2, 4) + attribute(0x200, "") + attribute(1, seven), true, 1, 0},
        {"negative count", number(-1, 4), false, 0, 0},
        {"huge count", number(INT32_MAX, 4) + attribute(1, seven), false, 0, 0},
        {"huge list", one + attribute(2, number(2, 2) + number(INT32_MAX, 4)), false, 0, 0},
        {"huge bytes", one + attribute(2, number(7, 2) + number(-1, 4) + "x"), false, 0, 1},
        {"form 41 is 4", one + attribute(2, number(41, 2) + one + number(2, 4) + std::string("t\0", 2)), true, 1, 0},
        {"older form", one + attribute(2, number(101, 2)), false, 0, 0},
        {"older form", one + attribute(2, number(1, 2) + seven), false, 0, 8},
        {"too long a text", one + attribute(8, number(50001, 4) + std::string(50001, 'x')) + "rest", false, 0, 4},
        {"longest text", one + attribute(8, number(50000, 4) + std::string(50000, 'x')) + "rest", true, 1, 4},
        {"negative text", one + attribute(8, number(-5, 4)), false, 0, 0},
        {"duplicate keys", number(2, 4) + attribute(1, seven) + attribute(1, seven), true, 2, 0},
        {"object of a bad name", one + attribute(2, number(20, 2) + number(0, 4) + seven + number(0, 4)), true, 1, 0},
        {"array that owns itself",
         one + attribute(2, number(20, 2) + number(8, 4) + std::string("CmArray\0", 8) + seven + one +
                                attribute(2, number(21, 2) + seven)),
         true, 1, 0},
        {"key of the 16-bit form", one + number(6, 4) + std::string("ab\0\xEF\xBB\xBF", 6) + number(1, 2) + seven, true,
         1, 0},
        {"item that is no object", one + attribute(2, number(201, 2) + one + number(7, 2)), false, 0, 0},
    };
    for (const auto& [name, bytes, loads, kept, left] : rows) {
        SCOPED_TRACE(name);
        const OPtr<FMemoryStream> stream = streamOf(bytes);
        FAttributes bag;
        EXPECT_EQ(FBinArchive(stream, false).loadAttributes(bag), loads);
        EXPECT_EQ(bag.countAttributes(), kept);
        EXPECT_TRUE(kept == 0 || bag.containsAttribute("k") || bag.containsAttribute("ab"));
        EXPECT_EQ(stream->getSize() - stream->tell(), left);
    }
}

TEST(BinArchive, ReadsComponentsThatAreBagsListsOrBytes) {
    const std::string one = number(1, 4);
    const OPtr<FMemoryStream> stream =
        streamOf(number(3, 4) + attribute(0x100, number(6, 2) + one + attribute(1, number(5, 8))) +
                 attribute(0x100, number(2, 2) + one + number(7, 8)) + attribute(0x100, number(7, 2) + one + "x"));
    FAttributes bag;
    EXPECT_TRUE(FBinArchive(stream, false).loadAttributes(bag));
    EXPECT_TRUE(bag.getAttributes("k") && bag.getAttributes("k")->getInt("k") == 5);
    bag.removeAttribute("k");
    int64_t item = 0;
    EXPECT_TRUE(bag.unqueueInt("k", item) && item == 7);
    bag.resetAllLists();
    EXPECT_TRUE(bag.unqueueInt("k", item));
    bag.removeAttribute("k");
    EXPECT_EQ(bag.getBinarySize("k"), 1u);
}

TEST(BinArchive, SeesThroughComponentsThatAreReferences) {
    const OPtr<FMemoryStream> stream = streamOf(
        number(2, 4) + attribute(0x100, number(21, 2) + number(7, 8)) +
        attribute(2, number(20, 2) + number(11, 4) + std::string("Attributes\0", 11) + number(7, 8) + number(0, 4)));
    FAttributes bag;
    FVariant value;
    EXPECT_TRUE(FBinArchive(stream, false).loadAttributes(bag));
    ASSERT_TRUE(bag.getObject("k", "FAttributes"));
    EXPECT_TRUE(bag.get("k", value) == kResultOk && commonObject(value.getObject()) == bag.getObject("k"));
}

TEST(XmlArchive, ReadsWhatPeopleWrite) {
    std::string deep, deepest;
    for (int32_t i = 0; i < 10000; ++i) {
        deep += "<member name='m'>";
        deepest += "<x>";
    }
    const std::string one = "<int name='a' value='1'/>", accent = "<string name='a' value='\xC3\xA9' wide='true'/>";
    const std::string longest =
        "<string name='" + std::string(5000, 'k') + "' value='" + std::string(100000, 'x') + "&lt;'/>";
    const std::string ints = "<list name='l' type='int'>", objects = "<list name='l' type='obj'>";
    // the attributes as they are written again: with other quotes and without line ends
    const std::tuple<const char*, std::string, bool, std::string> rows[] = {
        {"empty", "<T/>", true, ""},
        {"another root", "<U>" + one + "</U>", false, ""},
        {"nothing", "", false, ""},
        {"open and long tags", "<T><int name='a' value='1'></int><member name='m'/></T>junk", true,
         one + "<member name='m'></member>"},
        {"unknown elements", "<T><new a='1'><int name='x' value='1'/></new>" + one + "</T>", true, one},
        {"misplaced ones", "<T><item value='1'/><root/>" + ints + one + "<item value='3'/></list></T>", true,
         ints + "<item value='3'/></list>"},
        {"bad integers", "<T><int name='a' value='1x'/><int value=' 99999999999999999999'/></T>", true,
         one + "<int name='' value='9223372036854775807'/>"},
        {"bad floats", "<T><float name='b' value='+1e2x'/></T>", true, "<float name='b' value='100'/>"},
        {"wide, not marked", "<T><string name='a' value='\xC3\xA9'/></T>", true, accent},
        {"malformed UTF-8", "<T><string name='a' value='\x8E'/></T>", true, accent},
        {"broken bytes", "<T><bin name='b'>0 1\r\n0g2z3<x/>4</bin></T>", true, "<bin name='b'>\t\t010234</bin>"},
        {"unknown list", "<T><list name='l' type='new'><item value='1'/></list></T>", true, ""},
        {"unknown id", "<T>" + objects + "<item ID='7'/></list></T>", true, objects + "</list>"},
        {"too deep", "<T>" + deep, false, ""},
        {"too deep, unknown", "<T>" + deepest, false, ""},
        {"a long key and text", "<T>" + longest + one + "</T>", true, longest + one},
        {"NUL", "<T>" + one + std::string("\0</T>", 5), true, one},
    };
    for (const auto& [name, source, loads, saved] : rows) {
        SCOPED_TRACE(name);
        const OPtr<FMemoryStream> stream = streamOf(source);
        FMemoryStream again;
        FAttributes bag;
        EXPECT_EQ(FXmlArchive(stream, false).loadAttributes("T", bag), loads);
        EXPECT_TRUE(FXmlArchive(&again, true).saveAttributes("T", bag));
        std::string text = textOf(again);
        text.erase(0, text.find("<T>") + 3);
        text.erase(text.rfind("</T>"));
        for (size_t at = 0; (at = text.find('\r', at)) != text.npos;)
            text.erase(at, std::min(text.find_first_not_of("\r ", at), text.size()) - at);
        std::ranges::replace(text, '"', '\'');
        EXPECT_EQ(text, saved);
    }
}

TEST(XmlArchive, LoadsBagsAloneAndAsksForTheClass) {
    const OPtr<StoredNode> top = graph();
    FMemoryStream stream;
    FXmlArchive writer(&stream, true);
    writer.addRoot("root", top.get());
    const OPtr<FAttributes> bag = fullBag();
    writer.addGlobalRoot("bag", bag.get());
    ASSERT_TRUE(writer.save("T"));
    for (const bool withoutObjects : {false, true}) {
        stream.rewind();
        FXmlArchive reader(&stream, false);
        FAttributes back;
        EXPECT_TRUE(reader.load("T", "StoredNode", withoutObjects));
        EXPECT_TRUE(reader.getGlobalRoot("bag", &back) && back.getInt("int") == 42);
        EXPECT_EQ(OPtr<CmObject>(reader.getRoot("root")).get() == nullptr, withoutObjects);
    }
    stream.rewind();
    EXPECT_FALSE(FXmlArchive(&stream, false).load("T", "CmString"));
}

/** Every class that stores itself, by all archives. */
struct ClassRow {
    const char* name;
    std::function<CmObject*()> make;
    bool byArchive = true;  // comes back whole from an object archive too
};

template <class Container>
CmObject* containerOfTexts() {
    auto* container = new Container;
    container->_ownsObjects = CmContainer::kTakesOver;
    for (const char* text : {"b", "a"})
        container->add(new CmString(text));
    return container;
}

template <class Archive>
OPtr<CmObject> throughObjectArchive(CmObject* object) {
    FMemoryStream stream;
    EXPECT_TRUE(Archive(&stream, true).save(object));
    stream.rewind();
    return OPtr<CmObject>(Archive(&stream, false).load(object->isA()));
}

template <class Format>
OPtr<CmObject> throughAttributes(CmObject* object) {
    FMemoryStream stream;
    typename Format::Archive writer(&stream, true), reader(&stream, false);
    writer.addRoot("o", object);
    EXPECT_TRUE(Format::save(writer));
    stream.rewind();
    EXPECT_TRUE(Format::load(reader));
    return OPtr<CmObject>(reader.getRoot("o", object->isA()));
}

TEST(Persistence, OfEveryClassThroughEveryArchive) {
    const ClassRow rows[] = {
        {"text", [] { return new CmString("a<b\x8A"); }},
        {"wide text", [] { return new CmString(u"\u00e9\u4e2d\U0001F600"); }},
        {"empty text", [] { return new CmString; }},
        {"date", [] { return new CmDate(2460000); }},
        {"time", [] { return new CmTime(CmDate(2460000), 86399); }},
        {"expression", [] { return new CmRegularExpression("a*b?", true); }},
        {"identifier", [] { return new CmUID(0x01234567, 0x89ABCDEF, 0xFEDCBA98, 0x76543210); }},
        {"bytes",
         [] {
             auto* stream = new FMemoryStream;
             stream->writeRaw("\0\xFF<>", 4);
             return stream;
         }},
        {"array", containerOfTexts<CmArray>},
        {"hash table", containerOfTexts<CmHashTable>, false},
        {"empty", [] { return new CmArray; }},
        {"bag",
         [] {
             OPtr<FAttributes> bag = fullBag();
             bag->queueObject("objects", new CmString("o"), true);
             bag->setObject("buffer", new CmBuffer("abc", 3), true);
             const OPtr<CmString> target(new CmString("late"));
             auto* reference = new FXmlReference(1);
             reference->setObject(target.get());
             bag->setObject("reference", reference, true);
             return bag.detach();
         }},
    };
    for (const ClassRow& row : rows) {
        SCOPED_TRACE(row.name);
        const OPtr<CmObject> object(row.make());
        Ids ids;
        const std::string expected = canonical(object, ids);
        const auto check = [&](const char* way, const OPtr<CmObject>& again) {
            SCOPED_TRACE(way);
            ASSERT_TRUE(again);
            EXPECT_EQ(canonical(again, ids), expected);
        };
        check("binary", throughAttributes<Binary>(object));
        check("XML", throughAttributes<Xml>(object));
        if (!row.byArchive)
            continue;
        check("object archive", throughObjectArchive<FNewArchive>(object));
        check("simple archive", throughObjectArchive<FSimpleArchive>(object));
    }
}

TEST(Stripper, LeavesNoObjectAlive) {
    const OPtr<FXmlReference> identity(new FXmlReference(0));
    FAttributes bag;
    {
        const OPtr<StoredNode> top = graph();
        bag.setObject("top", top.get());
        bag.queueObject("list", top.get(), false);
        const OPtr<FAttributes> inner(new FAttributes);
        inner->setObject("again", top->children[0].get());
        bag.setAttributes("inner", inner.get());
        const OPtr<FXmlInstance> alien(new FXmlInstance(1, "AlienThing"));
        alien->getAttributes()->setObject("top", top.get());
        identity->setIdentity(top.get());
        alien->getAttributes()->queueObject("same", identity.get(), false);
        bag.setObject("alien", alien.get());
        EXPECT_TRUE(bag.stripObjects());
    }
    EXPECT_EQ(StoredNode::living, 0);
    EXPECT_EQ(bag.getObjectAttributes("top")->getInt("number"), 1);
    EXPECT_EQ(bag.lookupQueueObjectAttributes("list", 0), bag.getObjectAttributes("top")) << "once";
    EXPECT_EQ(bag.getObjectAttributes("alien")->getObjectAttributes("top"), bag.getObjectAttributes("top"));
    EXPECT_EQ(identity->getID(), reinterpret_cast<uintptr_t>(bag.getObject("top")));
    FMemoryStream stream;
    EXPECT_TRUE(FBinArchive(&stream, true).saveAttributes(bag));
    stream.rewind();
    std::string bytes = textOf(stream);
    ASSERT_NE(bytes.find("StoredNode"), bytes.npos);
    FAttributes back;
    EXPECT_TRUE(FBinArchive(&stream, false).loadAttributes(back));
    auto* top = static_cast<StoredNode*>(back.getObject("top", "StoredNode"));
    ASSERT_TRUE(top && top->children.size() == 3) << "alive again";
    EXPECT_EQ(top->children[0]->parent, top);
    EXPECT_EQ(back.getAttributes("inner")->getObject("again"), top->children[0].get());
}
}  // namespace
}  // namespace Tessarine
