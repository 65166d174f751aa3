// Bags of named attributes, many of them in one list: an integer, a double, a text and a bag with an integer. Written to memory
// and read from it, time per bag; each peer in its own natural form. Ours are members without identity, so that the time of one
// must not grow with their number.
#include "pluginterfaces/base/smartpointer.h"
#include "storage/fbinarchive.h"
#include "storage/fmstream.h"
#include "storage/fxmlarchive.h"
#include <benchmark/benchmark.h>
#include <sstream>
#include <string>
#ifdef BENCH_QT
#include <QBuffer>
#include <QDataStream>
#include <QVariant>
#endif
#ifdef BENCH_PUGIXML
#include <pugixml.hpp>
#endif
#ifdef BENCH_BOOST
#include <boost/property_tree/ptree.hpp>
#include <boost/property_tree/xml_parser.hpp>
#endif

using namespace Tessarine;

namespace {
constexpr char kText[] = "Channel 12";

/** A number that is different in each bag. */
double levelOf(int64_t number) {
    return double(number) * 0.37 - 60;
}

class OurBags {
public:
    void fill(int64_t count) {
        bags = new FAttributes;
        for (int64_t i = 0; i < count; ++i) {
            const OPtr<FAttributes> bag(new FAttributes), place(new FAttributes);
            place->set("slot", i);
            bag->set("id", i);
            bag->set("level", levelOf(i));
            bag->setString8("name", kText);
            bag->setAttributes("place", place.get());
            bags->queueAttributes("bags", bag.get());
        }
    }
    int64_t size() const { return stream.getSize(); }
    bool isWhole(int64_t count) const { return bags->countQueueItems("bags") == count; }

protected:
    OPtr<FAttributes> bags;
    FMemoryStream stream;
};

struct OurBinary : OurBags {
    bool write() {
        stream.reset();
        return FBinArchive(&stream, true).saveAttributes(*bags);
    }
    bool read() {
        stream.rewind();
        return FBinArchive(&stream, false).loadAttributes(*bags);
    }
};

struct OurXml : OurBags {
    bool write() {
        stream.reset();
        return FXmlArchive(&stream, true).saveAttributes("Bags", *bags);
    }
    bool read() {
        stream.rewind();
        return FXmlArchive(&stream, false).loadAttributes("Bags", *bags);
    }
};

#ifdef BENCH_QT
struct QtVariants {
    void fill(int64_t count) {
        for (int64_t i = 0; i < count; ++i)
            bags.append(QVariantMap{
                {"id",    qlonglong(i)                       },
                {"level", levelOf(i)                         },
                {"name",  QString(kText)                     },
                {"place", QVariantMap{{"slot", qlonglong(i)}}},
            });
    }
    bool write() {
        bytes.clear();
        QDataStream stream(&bytes, QIODevice::WriteOnly);
        stream << bags;
        return stream.status() == QDataStream::Ok;
    }
    bool read() {
        QDataStream stream(&bytes, QIODevice::ReadOnly);
        stream >> bags;
        return stream.status() == QDataStream::Ok;
    }
    int64_t size() const { return bytes.size(); }
    bool isWhole(int64_t count) const { return bags.size() == count; }

    QVariantList bags;
    QByteArray bytes;
};
#endif

#ifdef BENCH_PUGIXML
/** A bare tree of the same elements, whose values stay text. */
struct PugiTree {
    struct Text : pugi::xml_writer {
        void write(const void* data, size_t count) override { bytes.append(static_cast<const char*>(data), count); }
        std::string bytes;
    };

    template <class Value>
    static void add(pugi::xml_node bag, const char* kind, const char* name, Value value) {
        pugi::xml_node element = bag.append_child(kind);
        element.append_attribute("name") = name;
        element.append_attribute("value") = value;
    }
    void fill(int64_t count) {
        pugi::xml_node root = tree.append_child("bags");
        for (int64_t i = 0; i < count; ++i) {
            pugi::xml_node bag = root.append_child("item");
            add(bag, "int", "id", static_cast<long long>(i));
            add(bag, "float", "level", levelOf(i));
            add(bag, "string", "name", kText);
            pugi::xml_node place = bag.append_child("member");
            place.append_attribute("name") = "place";
            add(place, "int", "slot", static_cast<long long>(i));
        }
    }
    bool write() {
        text.bytes.clear();
        tree.save(text);
        return true;
    }
    bool read() { return bool(tree.load_buffer(text.bytes.data(), text.bytes.size())); }
    int64_t size() const { return int64_t(text.bytes.size()); }
    bool isWhole(int64_t count) const {
        const auto bags = tree.child("bags").children("item");
        return std::distance(bags.begin(), bags.end()) == count;
    }

    pugi::xml_document tree;
    Text text;
};
#endif

#ifdef BENCH_BOOST
struct PropertyTree {
    void fill(int64_t count) {
        boost::property_tree::ptree& root = tree.add("bags", "");
        for (int64_t i = 0; i < count; ++i) {
            boost::property_tree::ptree& bag = root.add("bag", "");
            bag.add("id", i);
            bag.add("level", levelOf(i));
            bag.add("name", kText);
            bag.add("place.slot", i);
        }
    }
    bool write() {
        std::ostringstream stream;
        boost::property_tree::write_xml(stream, tree);
        text = stream.str();
        return true;
    }
    bool read() {
        std::istringstream stream(text);
        boost::property_tree::read_xml(stream, tree);
        return true;
    }
    int64_t size() const { return int64_t(text.size()); }
    bool isWhole(int64_t count) const { return int64_t(tree.get_child("bags").count("bag")) == count; }

    boost::property_tree::ptree tree;
    std::string text;
};
#endif

template <class Bags>
void write(benchmark::State& state) {
    Bags bags;
    bags.fill(state.range(0));
    for (auto _ : state) {
        if (!bags.write())
            state.SkipWithError("it can't be written");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["bytes_per_bag"] = double(bags.size()) / double(state.range(0));
}

/** With the end of what was read before. */
template <class Bags>
void read(benchmark::State& state) {
    Bags bags;
    bags.fill(state.range(0));
    bags.write();
    bags.read();  // what was filled in goes here: it came in another way
    for (auto _ : state) {
        if (!bags.read() || !bags.isWhole(state.range(0)))
            state.SkipWithError("it can't be read");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
}  // namespace

#define BENCH_BAGS(Form, Peer, Bags)                                                                               \
    BENCHMARK_TEMPLATE(write, Bags)->Name("Write" Form "<" Peer ">")->Arg(1000)->Arg(100000);                      \
    BENCHMARK_TEMPLATE(write, Bags)->Name("Write" Form "<" Peer ">")->Arg(1000000)->Iterations(1)->Repetitions(3); \
    BENCHMARK_TEMPLATE(read, Bags)->Name("Read" Form "<" Peer ">")->Arg(1000)->Arg(100000);                        \
    BENCHMARK_TEMPLATE(read, Bags)->Name("Read" Form "<" Peer ">")->Arg(1000000)->Iterations(1)->Repetitions(3)

BENCH_BAGS("BinaryBag", "Ours", OurBinary);
BENCH_BAGS("XmlBag", "Ours", OurXml);
#ifdef BENCH_QT
BENCH_BAGS("BinaryBag", "QtDataStream", QtVariants);
#endif
#ifdef BENCH_PUGIXML
BENCH_BAGS("XmlBag", "Pugixml", PugiTree);
#endif
#ifdef BENCH_BOOST
BENCH_BAGS("XmlBag", "PropertyTree", PropertyTree);
#endif
