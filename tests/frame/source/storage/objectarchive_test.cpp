#include "archiveprobes.h"
#include "base/fmessage.h"
#include "collect/cmarray.h"
#include "storage/fnewarchive.h"
#include "storage/fsimplearchive.h"
#include <vector>

using namespace Tessarine;

namespace {
/** A node with a number and two neighbours, which it owns when they were read. */
class GraphNode : public CmObject {
public:
    DECLARE_CLASS(GraphNode, CmObject)
    explicit GraphNode(int16_t number = 0) : number(number) { ++living; }
    ~GraphNode() override { --living; }

    bool externalize(FArchive& archive) const override {
        return number >= 0 && archive.getStream().writeInt16(number) && archive.save(left) &&
               archive.save(right, false);
    }
    bool internalize(FArchive& archive) override {
        version = archive.getVersion();
        if (!archive.getStream().readInt16(number))
            return false;
        left = OPtr<CmObject>(archive.load("GraphNode"));
        right = OPtr<CmObject>(archive.load("GraphNode", false));
        return number != 13;
    }

    int16_t number;
    int32_t version = -1;
    IPtr<CmObject> left, right;
    inline static int32_t living = 0;
};
IMPLEMENT_CLASS_V(GraphNode, CmObject, 7)

class SpecialNode : public GraphNode {
public:
    DECLARE_CLASS(SpecialNode, GraphNode)
    using GraphNode::GraphNode;
};
IMPLEMENT_CLASS_V(SpecialNode, GraphNode, 9)

template <class Archive>
class ObjectArchives : public testing::Test {
protected:
    ~ObjectArchives() override { EXPECT_EQ(GraphNode::living, 0); }

    bool save(const CmObject* object) { return Archive(&stream, true, &errors).save(object); }
    OPtr<GraphNode> load(const char* className = "GraphNode") {
        stream.rewind();
        return OPtr<GraphNode>(static_cast<GraphNode*>(Archive(&stream, false, &errors).load(className)));
    }

    FMemoryStream stream;
    Errors errors;
};
using Kinds = testing::Types<FNewArchive, FSimpleArchive>;
TYPED_TEST_SUITE(ObjectArchives, Kinds);

class NewArchive : public ObjectArchives<FNewArchive> {};

OPtr<GraphNode> chain(int32_t length) {
    OPtr<GraphNode> node(new GraphNode(1));
    for (int32_t i = 1; i < length; ++i) {
        OPtr<GraphNode> outer(new GraphNode(1));
        outer->left = node.get();
        node = outer;
    }
    return node;
}

/** Two nodes, the inner one known by two ways. */
OPtr<GraphNode> diamond() {
    OPtr<GraphNode> top(new SpecialNode(1));
    OPtr<GraphNode> left(new GraphNode(2)), shared(new GraphNode(3));
    left->left = shared.get();
    top->left = left.get();
    shared->right = new GraphNode(4);
    shared->right->release();
    return top;
}
}  // namespace

TYPED_TEST(ObjectArchives, KeepIdentityAndVersions) {
    const OPtr<GraphNode> top = diamond();
    auto* left = static_cast<GraphNode*>(top->left.get());
    left->right = left->left;
    {
        TypeParam archive(&this->stream, true);
        EXPECT_TRUE(archive.save(top.get()) && archive.save(top.get()) && archive.save(nullptr));
    }
    this->stream.rewind();
    TypeParam archive(&this->stream, false);
    const OPtr<CmObject> first(archive.load(nullptr)), second(archive.load(nullptr));
    EXPECT_EQ(first.get(), second.get());
    EXPECT_FALSE(archive.load(nullptr));
    EXPECT_TRUE(archive.getClassVersion("GraphNode") == 7 && archive.getLastError() == 0);
    ASSERT_TRUE(first && first->isA() == std::string("SpecialNode"));
    auto* special = static_cast<GraphNode*>(first.get());
    EXPECT_EQ(special->version, 9);
    auto* inner = static_cast<GraphNode*>(special->left.get());
    EXPECT_EQ(inner->version, 7);
    ASSERT_TRUE(inner->left && inner->right);
    EXPECT_EQ(static_cast<GraphNode*>(inner->left.get())->number, 3);
    EXPECT_NE(inner->left.get(), inner->right.get()) << "without a reference it is a copy";
}

TYPED_TEST(ObjectArchives, AreTheFilesThatTheyAlwaysWere) {
    const bool isNew = std::is_same_v<TypeParam, FNewArchive>;
    std::string golden = goldenFile(isNew ? "diamond.bin" : "diamond.simple");
    ASSERT_TRUE(this->save(diamond().get()));
    EXPECT_EQ(textOf(this->stream), golden);
    const OPtr<GraphNode> again = this->load();
    this->stream.setSize(0);
    ASSERT_TRUE(this->save(again.get()));
    EXPECT_EQ(textOf(this->stream), golden);
}

TYPED_TEST(ObjectArchives, ContainersNeitherOwnThemselvesNorGrowChains) {
    {
        TypeParam archive(&this->stream, true);
        std::vector<OPtr<CmArray>> chain;
        for (int32_t i = 0; i < 600; ++i) {
            chain.emplace_back(new CmArray);
            chain[i]->_ownsObjects = CmContainer::kShares;
            if (i > 0)
                chain[i]->add(chain[i - 1].get());
            ASSERT_TRUE(archive.save(chain[i].get()));
        }
    }
    this->stream.rewind();
    TypeParam archive(&this->stream, false, &this->errors);
    std::vector<OPtr<CmObject>> read;
    while (CmObject* object = archive.load("CmArray"))
        read.emplace_back(object);
    EXPECT_EQ(read.size(), 513u);
    const OPtr<CmArray> ring(new CmArray);
    ring->add(ring.get());
    const OPtr<FMessage> message(new FMessage("ring"));
    message->add("self", message.get(), false);
    for (const CmObject* each : {static_cast<const CmObject*>(ring), static_cast<const CmObject*>(message)}) {
        FMemoryStream bytes;
        ASSERT_TRUE(TypeParam(&bytes, true).save(each));
        bytes.rewind();
        TypeParam ringArchive(&bytes, false);
        EXPECT_EQ(OPtr<CmObject>(ringArchive.load(each->isA())), nullptr);
        EXPECT_EQ(ringArchive.getLastError(), FArchive::kUnreadableObject);
    }
    message->remove("self");
}

TYPED_TEST(ObjectArchives, RefuseWhatIsBadTooDeepOrCutOff) {
    const OPtr<GraphNode> outer(new GraphNode(1)), bad(new GraphNode(-1));
    outer->left = bad.get();
    EXPECT_FALSE(this->save(outer.get()));
    EXPECT_EQ(this->errors.heard, "-100GraphNode -100GraphNode ");
    this->errors.heard.clear();
    this->stream.reset();
    EXPECT_TRUE(this->save(chain(512).get()) && this->load() && this->errors.heard.empty());
    this->stream.reset();
    EXPECT_FALSE(this->save(chain(513).get()));
    EXPECT_TRUE(this->errors.heard.starts_with("-100GraphNode "));
    this->stream.reset();
    ASSERT_TRUE(this->save(diamond().get()));
    const int64_t size = this->stream.getSize();
    for (int64_t cut = 0; cut < size; ++cut) {
        const OPtr<FMemoryStream> part = streamOf(textOf(this->stream).substr(0, static_cast<size_t>(cut)));
        TypeParam archive(part, false);
        const OPtr<CmObject> object(archive.load(nullptr));
        EXPECT_NE(archive.getLastError(), 0) << cut;
    }
}

TEST_F(NewArchive, StepsOverWhatItCannotRead) {
    {
        FNewArchive archive(&stream, true);
        for (const int16_t number : {13, 5})
            archive.save(OPtr<GraphNode>(new GraphNode(number)).get(), false);
        archive.save(OPtr<SpecialNode>(new SpecialNode(6)).get(), false);
    }
    std::string bytes = textOf(stream);
    bytes.replace(bytes.find("SpecialNode"), 11, "UnknownNode");
    const OPtr<FMemoryStream> changed = streamOf(bytes);
    FNewArchive archive(changed, false, &errors);
    EXPECT_FALSE(archive.load("GraphNode"));
    const OPtr<CmObject> good(archive.load("GraphNode"));
    EXPECT_TRUE(good);
    EXPECT_FALSE(archive.load("GraphNode"));
    EXPECT_EQ(errors.heard, "-99GraphNode -99UnknownNode ");
    EXPECT_EQ(changed->tell(), changed->getSize());
}

TEST_F(NewArchive, SizesThatLieEndTheReading) {
    ASSERT_TRUE(save(OPtr<GraphNode>(new GraphNode(1)).get()));
    std::string bytes = textOf(stream);
    for (const char top : {'\xFF', '\x7F'}) {
        bytes[bytes.size() - 11] = top;
        EXPECT_FALSE(FNewArchive(streamOf(bytes), false, &errors).load(nullptr));
    }
    EXPECT_EQ(errors.heard, "-99 -99 ");
}

/** A class may be recorded in what is stepped over, and nowhere else. */
TEST_F(NewArchive, KnowsTheClassesOfWhatItSteppedOver) {
    {
        FNewArchive archive(&stream, true);
        const OPtr<GraphNode> outer(new GraphNode(1)), inner(new SpecialNode(2));
        outer->left = inner.get();
        archive.save(outer.get());
        archive.save(OPtr<SpecialNode>(new SpecialNode(6)).get());
    }
    std::string bytes = textOf(stream);
    bytes.replace(bytes.find("GraphNode"), 9, "Unknown\0\0", 9);
    const size_t reference = bytes.size() - 18;
    for (const bool isGood : {true, false}) {
        if (!isGood)
            bytes[reference] = static_cast<char>(reference);  // to itself
        const OPtr<FMemoryStream> changed = streamOf(bytes);
        FNewArchive archive(changed, false);
        EXPECT_FALSE(archive.load(nullptr));
        const OPtr<CmObject> next(archive.load("SpecialNode"));
        ASSERT_EQ(bool(next), isGood);
        EXPECT_EQ(next ? static_cast<SpecialNode*>(next.get())->version : 9, 9);
    }
}

/** Were it otherwise, arrays in arrays would each read again all that is behind them. */
TEST_F(NewArchive, NothingKeepsWhatIsBehindItsSize) {
    const OPtr<GraphNode> node(new GraphNode(1));
    const OPtr<CmArray> outer(new CmArray), inner(new CmArray);
    outer->_ownsObjects = inner->_ownsObjects = CmContainer::kShares;
    outer->add(inner.get());
    {
        FNewArchive archive(&stream, true);
        EXPECT_TRUE(archive.save(node.get()) && archive.save(outer.get()) && archive.save(node.get()));
    }
    std::string bytes = textOf(stream);
    bytes[bytes.size() - 8] = 1;  // the inner array's count, before the reference to the node
    const OPtr<FMemoryStream> changed = streamOf(bytes);
    FNewArchive archive(changed, false, &errors);
    const OPtr<CmObject> first(archive.load(nullptr));
    EXPECT_FALSE(archive.load(nullptr));
    EXPECT_EQ(OPtr<CmObject>(archive.load(nullptr)), first);
    EXPECT_EQ(errors.heard, "-99CmArray -99CmArray ");
}
