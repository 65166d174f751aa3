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
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <regex>

namespace Tessarine {
IMPLEMENT_CLASS(StoredNode, CmObject)

namespace {
using Binary = FBinArchive;
/** Everything under one name, and loaded only when it is whole. */
class Xml : public FXmlArchive {
public:
    using FXmlArchive::FXmlArchive;
    bool save() { return FXmlArchive::save("Test"); }
    bool load() { return FXmlArchive::load("Test") && isWhole(); }
    bool saveAttributes(const FAttributes& bag) { return FXmlArchive::saveAttributes("Test", bag); }
    bool loadAttributes(FAttributes& bag) { return FXmlArchive::loadAttributes("Test", bag); }
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

/** The attributes as XML, with other quotes and without ids and line ends. */
std::string xmlOf(const FAttributes& bag) {
    FMemoryStream stream;
    EXPECT_TRUE(Xml(&stream, true).saveAttributes(bag));
    std::string text = std::regex_replace(textOf(stream), std::regex("\r *| ID=\"[0-9]+\""), "");
    std::ranges::replace(text, '"', '\'');
    const size_t start = text.find("<Test>") + 6;
    return text.substr(start, text.rfind("</Test>") - start);
}

/** An object as XML, its ids counted from 1 in the order of their first appearance. */
std::string canonical(CmObject* object) {
    FMemoryStream stream;
    Xml archive(&stream, true);
    archive.addRoot("root", object);
    EXPECT_TRUE(archive.save());
    const std::string text = textOf(stream);
    std::map<std::string, size_t> ids;
    std::string result;
    for (size_t at = 0, next; at < text.size(); at = next) {
        next = std::min(text.find('"', at), text.size() - 1) + 1;
        const std::string piece = text.substr(at, next - at);
        const bool isID = piece.size() > 9 && piece.find_first_not_of("0123456789") == piece.size() - 1;
        result += isID ? std::to_string(ids.emplace(piece, ids.size() + 1).first->second) + '"' : piece;
    }
    return result;
}

template <class Archive>
class AttributeArchives : public testing::Test {
protected:
    struct NothingLeft {
        ~NothingLeft() { EXPECT_EQ(StoredNode::living, 0); }
    } nothingLeft;  // behind what follows

    std::string saved(CmObject* root, FAttributes* bag = nullptr) {
        FMemoryStream bytes;
        Archive archive(&bytes, true);
        if (root)
            archive.addRoot("root", root);
        if (bag)
            archive.addGlobalRoot("bag", bag);
        EXPECT_TRUE(archive.save());
        return textOf(bytes);
    }
    OPtr<CmObject> loaded(const std::string& bytes, FAttributes* bag = nullptr) {
        const OPtr<FMemoryStream> source = streamOf(bytes);
        Archive archive(source, false);
        EXPECT_TRUE(archive.load());
        EXPECT_EQ(source->tell(), source->getSize() - (bytes.ends_with('\r') ? 1 : 0));
        EXPECT_TRUE(!bag || archive.getGlobalRoot("bag", bag));
        return OPtr<CmObject>(archive.getRoot("root"));
    }

    static constexpr bool kIsXml = std::is_same_v<Archive, Xml>;
    FMemoryStream stream;
    Archive writer{&stream, true}, reader{&stream, false};
};
using Formats = testing::Types<Binary, Xml>;
TYPED_TEST_SUITE(AttributeArchives, Formats);
using BinArchive = AttributeArchives<Binary>;
using XmlArchive = AttributeArchives<Xml>;

TYPED_TEST(AttributeArchives, AreTheFilesThatTheyAlwaysWere) {
    const std::string ending = this->kIsXml ? ".xml" : ".bin", bags = goldenFile("bag" + ending);
    EXPECT_EQ(this->saved(nullptr, fullBag().get()), bags);
    FAttributes bag;
    this->loaded(bags, &bag);
    EXPECT_EQ(this->saved(nullptr, &bag), bags);

    const std::string expected = goldenFile("graph.xml");
    EXPECT_EQ(canonical(graph().get()), expected);
    std::string objects = goldenFile("graph" + ending), unknown = expected;
    EXPECT_EQ(canonical(this->loaded(objects)), expected);
    EXPECT_EQ(canonical(this->loaded(this->saved(graph().get()))), expected);

    for (std::string* each : {&objects, &unknown})
        for (size_t at = 0; (at = each->find("StoredNode", at)) != each->npos;)
            each->replace(at, 10, "AlienThing");
    EXPECT_EQ(canonical(this->loaded(this->saved(this->loaded(objects)))), unknown) << "what isn't known survives";
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

OPtr<FMemoryStream> streamWithRoot(const std::string& objects) {
    return streamOf("<Test><rootObjects><root name='r' ID='1'/><root name='q' ID='100000'/></rootObjects>" + objects +
                    "</Test>");
}

TEST_F(XmlArchive, NeitherLeaksNorDanglesWhateverRefersToWhat) {
    const std::string plain = "<int name='number' value='5'/>", owns = "<int name='ownership' value='2'/>";
    const std::string node = object("StoredNode", 2, plain), root = object("X", 1, refers(2));
    const std::string isObject = "<int name='type' value='2'/>", owned = owns + holds("obj", item(1) + node);
    const std::string other = object("StoredNode", 3, plain);
    const auto pair = [](const std::string& bag) {
        return object("CmAssociation", 1, "<member name='Obj'>" + bag + "</member>");
    };
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
        {"array in itself", object("CmArray", 1, owned), "CmArray", 1},
        {"over an unknown one", object("CmArray", 1, owns + holds("obj", object("X", 2, refers(1)))), "CmArray", 0},
        {"array in an unknown one", object("X", 1, object("CmArray", 2, owns + holds("obj", item(1)))), "FXmlInstance",
         0},
        {"variant in its own array",
         object("CmVariant", 1, isObject + "<obj class='CmArray' name='obj' ID='3'>" + owned + "</obj>"), "CmVariant",
         1},
        {"bag in itself", object("Attributes", 1, holds("l", item(1)) + node), "FAttributes", 1},
        {"bags in a ring", object("Attributes", 1, refers(3) + node) + object("Attributes", 3, refers(1)),
         "FAttributes", 1},
        {"array in itself around an unknown one",
         root + object("CmArray", 2, owns + holds("obj", item(1) + item(2) + other)), "FXmlInstance", 0},
        {"around one that keeps nothing too",
         root + object("CmArray", 2,
         owns + holds("obj", item(1) + object("CmString", 4, refers(2) + "<string name='s' value='q'/>") +
                                               other)),
         "FXmlInstance", 0},
        {"bags in pairs in a ring", pair(refers(2) + other) + object("CmAssociation", 2, "<obj name='Obj' ID='1'/>"),
         "CmAssociation", 1},
        {"a bag in a pair that is held later",
         pair(refers(3)) + other + object("CmArray", 2, owns + holds("obj", item(1))), "CmAssociation", 1},
        {"no id", "<obj class='StoredNode'><obj name='parent'/>" + plain + "</obj>", nullptr, 0},
    };
    for (const auto& [name, objects, className, kept] : rows) {
        SCOPED_TRACE(name);
        OPtr<CmObject> held;
        {
            const OPtr<FMemoryStream> source = streamWithRoot(objects);
            Xml archive(source, false);
            EXPECT_TRUE(archive.load());
            held = archive.getRoot("r");
        }
        EXPECT_STREQ(held ? held->isA() : nullptr, className);
        EXPECT_EQ(StoredNode::living, kept);
        held = nullptr;
        EXPECT_EQ(StoredNode::living, 0);
    }
}

/** However long: each holds the next one, or the one before, only by its id. */
TEST_F(XmlArchive, ChainsOfBagsGoOneByOne) {
    constexpr std::pair<const char*, int32_t> rows[] = {
        {"X",          1 },
        {"X",          -1},
        {"Attributes", 1 },
        {"Attributes", -1}
    };
    for (const auto& [className, step] : rows) {
        std::string objects = object("StoredNode", 100001, "<int name='number' value='1'/>");
        for (int32_t id = 1; id <= 100000; ++id)
            objects += object(className, id, refers(id + step));
        const OPtr<FMemoryStream> source = streamWithRoot(objects);
        std::optional<Xml> archive(std::in_place, source, false);
        EXPECT_TRUE(archive->load());
        EXPECT_EQ(StoredNode::living, step > 0 ? 1 : 0);
        archive.reset();
        EXPECT_EQ(StoredNode::living, 0);
    }
}

/** Each holds the next one twice, in itself and by its id. */
TEST_F(XmlArchive, BagsThatAreSharedAreNotUnfolded) {
    std::string bags;
    for (int32_t id = 64; id > 0; --id)
        bags = object("Attributes", id, bags + (id < 64 ? refers(id + 1) : ""));
    const OPtr<FMemoryStream> source = streamWithRoot(bags);
    FMemoryStream again;
    Xml archive(source, false), writer(&again, true);
    ASSERT_TRUE(archive.load());
    const OPtr<CmObject> root(archive.getRoot("r", "FAttributes"));
    writer.addRoot("r", root.get());
    EXPECT_TRUE(writer.save());
    EXPECT_LT(again.getSize(), 1000000);
}

TYPED_TEST(AttributeArchives, TellWhatFailsAndGoOn) {
    Errors errors;
    const FAttributeArchiveErrorHookScope scope(&errors);
    const OPtr<StoredNode> top(new StoredNode(1));
    top->add(-1);
    this->writer.addRoot("root", top.get());
    EXPECT_FALSE(this->writer.save());
    top->children[0]->number = 13;
    this->stream.setSize(0);
    EXPECT_TRUE(this->writer.save());
    this->stream.rewind();
    EXPECT_FALSE(this->reader.load());
    EXPECT_TRUE(OPtr<CmObject>(this->reader.getRoot("root", "StoredNode"))) << "with a hole";
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
    this->writer.addRoot("root", top.get());
    EXPECT_TRUE(this->writer.save());
    this->stream.rewind();
    EXPECT_TRUE(this->reader.load());
    const OPtr<CmObject> root(this->reader.getRoot("root", "StoredNode"));
    std::string numbers;
    for (StoredNode* maker : static_cast<StoredNode*>(root.get())->children)
        for (StoredNode* made : maker->children)
            numbers += std::to_string(made->number) + " ";
    EXPECT_EQ(numbers, "20 21 22 23 ");
}

TYPED_TEST(AttributeArchives, NestToABound) {
    for (const int32_t depth : {FAttributeArchiveBase::kMaxDepth, FAttributeArchiveBase::kMaxDepth + 1}) {
        const bool good = depth == FAttributeArchiveBase::kMaxDepth;
        FAttributes outer, back;
        FAttributes* inner = &outer;
        for (int32_t level = 1; level < depth; ++level) {
            const OPtr<FAttributes> next(new FAttributes);
            level % 2 ? inner->setAttributes("m", next.get()) : inner->queueAttributes("m", next.get());
            inner = next;
        }
        this->stream.rewind();
        EXPECT_EQ(this->writer.saveAttributes(outer), good);
        this->stream.rewind();
        EXPECT_TRUE(!good || this->reader.loadAttributes(back));
    }
}

TYPED_TEST(AttributeArchives, CutOffIsNeverWhole) {
    const OPtr<StoredNode> top = graph();
    const std::string all = this->saved(top.get(), fullBag().get());
    for (size_t length = 0; length + 1 < all.size(); ++length)
        EXPECT_FALSE(TypeParam(streamOf(all.substr(0, length)), false).load()) << length;
}

TYPED_TEST(AttributeArchives, WriteNothingOfWhatCannotBeStored) {
    FAttributes bag, back;
    auto* pointer = new FStringIDAttribute("pointer");
    pointer->setPointer(&bag);
    auto* transient = new FStringIDAttribute("transient");
    transient->setLong(1);
    transient->keep(FAttributeValue::kTransient);
    const OPtr<FXmlReference> nothing(new FXmlReference(0));
    EXPECT_TRUE(bag.addAttribute(pointer) && bag.addAttribute(new FStringIDAttribute("empty")) &&
                bag.addAttribute(transient) && bag.setObject("nothing", nothing.get()));
    bag.queueObject("list", nothing.get(), false);
    EXPECT_TRUE(this->writer.saveAttributes(bag));
    this->stream.rewind();
    EXPECT_TRUE(this->reader.loadAttributes(back));
    EXPECT_EQ(xmlOf(back), "<int name='transient' value='1'/><list name='list' type='obj'></list>");
}

std::string number(int64_t value, int32_t size) {
    return {reinterpret_cast<const char*>(&value), static_cast<size_t>(size)};
}
std::string attribute(int64_t type, const std::string& value) {
    return number(2, 4) + std::string("k\0", 2) + number(type, 2) + value;
}

TEST_F(BinArchive, TakesOnlyWhatIsThere) {
    const std::string one = number(1, 4), two = number(2, 4), seven = number(7, 8);
    const std::string saved7 = "<int name='k' value='7'/>", longest(50000, 'x');
    const auto objectOf = [](const std::string& name, const std::string& bag) {
        return attribute(2, number(20, 2) + number(int64_t(name.size()), 4) + name + number(7, 8) + bag);
    };
    const std::string cmArray("CmArray\0", 8);
    // one bag, whether it loads, the bytes that aren't read, and the attributes in XML
    const std::tuple<const char*, std::string, bool, int64_t, std::string> rows[] = {
        {"a type without value", two + attribute(0x4000, "") + attribute(1, seven), true, 0, saved7},
        {"a pointer", two + attribute(0x200, "") + attribute(1, seven), true, 0, saved7},
        {"negative count", number(-1, 4), false, 0, ""},
        {"huge count", number(INT32_MAX, 4) + attribute(1, seven), false, 0, ""},
        {"huge list", one + attribute(2, number(2, 2) + number(INT32_MAX, 4)), false, 0, ""},
        {"huge bytes", one + attribute(2, number(7, 2) + number(-1, 4) + "x"), false, 1, ""},
        {"form 41 is 4", one + attribute(2, number(41, 2) + one + two + std::string("t\0", 2)), true, 0,
         "<list name='k' type='string'><item value='t'/></list>"},
        {"older form", one + attribute(2, number(101, 2)), false, 0, ""},
        {"older form", one + attribute(2, number(1, 2) + seven), false, 8, ""},
        {"too long a text", one + attribute(8, number(50001, 4) + longest + 'x') + "rest", false, 4, ""},
        {"longest text", one + attribute(8, number(50000, 4) + longest) + "rest", true, 4,
         "<string name='k' value='" + longest + "'/>"},
        {"negative text", one + attribute(8, number(-5, 4)), false, 0, ""},
        {"duplicate keys", two + attribute(1, seven) + attribute(1, seven), true, 0, saved7 + saved7},
        {"object of a bad name", one + objectOf("", number(0, 4)), true, 0, "<obj class='' name='k'></obj>"},
        {"array that owns itself", one + objectOf(cmArray, one + attribute(2, number(21, 2) + seven)), true, 0,
         "<obj class='CmArray' name='k'></obj>"},
        {"16-bit key", one + number(6, 4) + std::string("ab\0\xEF\xBB\xBF", 6) + number(1, 2) + seven, true, 0,
         "<int name='ab' value='7'/>"},
        {"item that is no object", one + attribute(2, number(201, 2) + one + number(7, 2)), false, 0, ""},
        {"a bag as a component", one + attribute(0x100, number(6, 2) + one + attribute(1, seven)), true, 0,
         "<member name='k'>" + saved7 + "</member>"},
        {"a list", one + attribute(0x100, number(2, 2) + one + seven), true, 0,
         "<list name='k' type='int'><item value='7'/></list>"},
        {"bytes", one + attribute(0x100, number(7, 2) + one + "x"), true, 0, "<bin name='k'>\t\t78</bin>"},
    };
    for (const auto& [name, bytes, loads, left, saved] : rows) {
        SCOPED_TRACE(name);
        const OPtr<FMemoryStream> stream = streamOf(bytes);
        FAttributes bag;
        EXPECT_EQ(FBinArchive(stream, false).loadAttributes(bag), loads);
        EXPECT_EQ(xmlOf(bag), saved);
        EXPECT_EQ(stream->getSize() - stream->tell(), left);
    }
    FAttributes bag;
    FVariant value;
    const OPtr<FMemoryStream> stream = streamOf(two + attribute(0x100, number(21, 2) + seven) +
                                                objectOf(std::string("Attributes\0", 11), number(0, 4)));
    EXPECT_TRUE(FBinArchive(stream, false).loadAttributes(bag));
    ASSERT_TRUE(bag.getObject("k", "FAttributes"));
    EXPECT_TRUE(bag.get("k", value) == kResultOk && commonObject(value.getObject()) == bag.getObject("k"));
}

TEST_F(XmlArchive, ReadsWhatPeopleWrite) {
    std::string deep, deepest;
    for (int32_t i = 0; i < 10000; ++i) {
        deep += "<member name='m'>";
        deepest += "<x>";
    }
    const std::string one = "<int name='a' value='1'/>", accent = "<string name='a' value='\xC3\xA9' wide='true'/>";
    const std::string longest =
        "<string name='" + std::string(5000, 'k') + "' value='" + std::string(100000, 'x') + "&lt;'/>";
    const std::string ints = "<list name='l' type='int'>", objects = "<list name='l' type='obj'>";
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
        FAttributes bag;
        EXPECT_EQ(FXmlArchive(streamOf(source), false).loadAttributes("T", bag), loads);
        EXPECT_EQ(xmlOf(bag), saved);
    }
    FAttributes bag;
    const OPtr<FMemoryStream> stream = streamOf("<T/>junk");
    FXmlArchive empty(stream, false);
    EXPECT_TRUE(empty.loadAttributes("T", bag) && empty.isWhole());
}

TEST_F(XmlArchive, LoadsBagsAloneAndAsksForTheClass) {
    const OPtr<FMemoryStream> source = streamOf(saved(graph().get(), fullBag().get()));
    for (const bool withoutObjects : {false, true}) {
        source->rewind();
        FXmlArchive archive(source, false);
        FAttributes bag;
        EXPECT_TRUE(archive.load("Test", "StoredNode", withoutObjects) && archive.getGlobalRoot("bag", &bag));
        EXPECT_EQ(bag.getInt("int"), 42);
        EXPECT_EQ(OPtr<CmObject>(archive.getRoot("root")).get() == nullptr, withoutObjects);
    }
    source->rewind();
    EXPECT_FALSE(FXmlArchive(source, false).load("Test", "CmString"));
}

template <class Container>
CmObject* containerOfTexts() {
    auto* container = new Container;
    container->_ownsObjects = CmContainer::kTakesOver;
    for (const char* text : {"b", "a"})
        container->add(new CmString(text));
    return container;
}

template <class Archive>
std::string throughObjectArchive(CmObject* object) {
    FMemoryStream stream;
    EXPECT_TRUE(Archive(&stream, true).save(object));
    stream.rewind();
    const OPtr<CmObject> copy(Archive(&stream, false).load(object->isA()));
    return copy ? canonical(copy) : "nothing";
}

TYPED_TEST(AttributeArchives, AndObjectArchivesKeepEveryClass) {
    const std::pair<const char*, std::function<CmObject*()>> rows[] = {
        {"text",       [] { return new CmString("a<b\x8A"); }                                  },
        {"wide text",  [] { return new CmString(u"\u00e9\u4e2d\U0001F600"); }                  },
        {"empty text", [] { return new CmString; }                                             },
        {"date",       [] { return new CmDate(2460000); }                                      },
        {"time",       [] { return new CmTime(CmDate(2460000), 86399); }                       },
        {"expression", [] { return new CmRegularExpression("a*b?", true); }                    },
        {"identifier", [] { return new CmUID(0x01234567, 0x89ABCDEF, 0xFEDCBA98, 0x76543210); }},
        {"bytes",      [] { return streamOf(std::string("\0\xFF<>", 4)).detach(); }            },
        {"array",      containerOfTexts<CmArray>                                               },
        {"hash table", containerOfTexts<CmHashTable>                                           },
        {"empty",      [] { return new CmArray; }                                              },
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
         }                                                                                     },
    };
    for (const auto& [name, make] : rows) {
        SCOPED_TRACE(name);
        const OPtr<CmObject> object(make());
        const std::string expected = canonical(object);
        EXPECT_EQ(canonical(this->loaded(this->saved(object))), expected);
        if (object->isA() == std::string("CmHashTable"))
            continue;  // object archives don't bring it back whole
        EXPECT_EQ(throughObjectArchive<FNewArchive>(object), expected);
        EXPECT_EQ(throughObjectArchive<FSimpleArchive>(object), expected);
    }
}

/** Stores a bag that it keeps. */
class Lender : public CmObject {
public:
    DECLARE_ABSTRACT_CLASS(Lender, CmObject)
    bool storeAttributes(FAttributes& attributes) const override { return attributes.setAttributes("lent", kept); }
    OPtr<FAttributes> kept{new FAttributes};
};
IMPLEMENT_ABSTRACT_CLASS(Lender, CmObject)

TEST_F(BinArchive, StripsNoBagOfALiveObject) {
    const OPtr<Lender> lender(new Lender);
    const OPtr<StoredNode> node = graph();
    lender->kept->setObject("node", node.get());
    FAttributes bag;
    bag.setObject("lender", lender.get());
    EXPECT_TRUE(bag.stripObjects());
    EXPECT_EQ(lender->kept->getObject("node", "StoredNode"), node.get());
    EXPECT_TRUE(bag.getObjectAttributes("lender")->getAttributes("lent")->getObjectAttributes("node"));
    FAttributes stored;
    lender->storeAttributes(stored);
    lender->kept->queueAttributes("ring", lender->kept.get());
    EXPECT_FALSE(stored.stripObjects()) << "it holds itself";
    EXPECT_EQ(lender->kept->getObject("node", "StoredNode"), node.get());
    lender->kept->removeAll();
}

TEST_F(BinArchive, StripsWithoutAnObjectLeftAlive) {
    const OPtr<FXmlReference> identity(new FXmlReference(0));
    uint64_t alive = 0;
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
        alive = identity->getID();
        alien->getAttributes()->queueObject("same", identity.get(), false);
        bag.setObject("alien", alien.get());
        EXPECT_TRUE(bag.stripObjects());
    }
    EXPECT_EQ(StoredNode::living, 0);
    const FAttributes* stripped = bag.getObjectAttributes("top");
    EXPECT_EQ(stripped->getInt("number"), 1);
    EXPECT_EQ(bag.lookupQueueObjectAttributes("list", 0), stripped) << "once";
    EXPECT_EQ(bag.getObjectAttributes("alien")->getObjectAttributes("top"), stripped);
    EXPECT_EQ(identity->getID(), alive) << "which isn't the bag's any more";
    const auto* same = static_cast<FObjectList*>(bag.getObjectAttributes("alien")->getAttribute(1)->getObj());
    EXPECT_EQ(static_cast<FXmlReference*>(same->at(0))->getID(), reinterpret_cast<uintptr_t>(bag.getObject("top")));
    EXPECT_TRUE(writer.saveAttributes(bag));
    stream.rewind();
    FAttributes back;
    EXPECT_TRUE(reader.loadAttributes(back));
    auto* top = static_cast<StoredNode*>(back.getObject("top", "StoredNode"));
    ASSERT_TRUE(top && top->children.size() == 3) << "alive again";
    EXPECT_EQ(top->children[0]->parent, top);
    EXPECT_EQ(back.getAttributes("inner")->getObject("again"), top->children[0].get());
}
}  // namespace
}  // namespace Tessarine
