#include "storage/xmldocument.h"
#include "storage/fxmlparser2.h"
#include "storage/fxmlwriter.h"
#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace Tessarine::Xml {
namespace {
constexpr int32_t kMaxDepth = 1000;
constexpr uint32_t kOutputBytes = 32768;

constexpr std::string_view kIntro = "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
constexpr std::string_view kFormat = "\t\n\r ";
constexpr std::string_view kTrimmed = " \t\n\v\f\r";

std::string_view textOf(const ElementData& node) {
    return {node.data.data(), node.data.getFillSize()};
}

template <class Class>
Class* nodeAs(Node* node) {
    return node && node->isTypeOf(Class::className(), true) ? static_cast<Class*>(node) : nullptr;
}

/** What goes to a stream, in large pieces. Once something failed, nothing more goes. */
class Output {
public:
    explicit Output(IBStream* stream) : stream(stream) {}

    void put(std::string_view text) {
        buffer.append(text);
        if (buffer.getFillSize() >= kOutputBytes)
            flush();
    }
    void putName(const String& text) {
        const tchar* units = text.text16();
        taken = appendUtf8(buffer, units, text.length()) && taken;
    }
    void putEscaped(const String& text) { taken = FXmlWriter::encodeString(buffer, text.text16()) && taken; }
    void put(const ElementData& node) {
        if (node.data.getFillSize() > 0)
            taken = FXmlWriter::encodeString(buffer, node.data.data(), true) && taken;
    }
    void put(const Attribute& node) {
        putEscaped(node.name);
        put("=\"");
        putEscaped(node.value);
        put("\"");
    }
    void put(const Comment& node) {
        put("<!--");
        putName(node.name);
        put("-->");
    }
    void putStart(const Element& element) {
        put("<");
        putName(element.name);
        for (const IPtr<Attribute>& attribute : element.attributes) {
            put(" ");
            put(*attribute);
        }
        put(element.children.isEmpty() ? "/>" : ">");
    }
    void putEnd(const Element& element) {
        if (element.children.isEmpty())
            return;
        put("</");
        putName(element.name);
        put(">");
    }
    /** A node of a class from elsewhere writes itself. */
    void putOther(const Node& node) {
        if (node.isA("ElementData"))
            put(static_cast<const ElementData&>(node));
        else if (node.isA("Comment"))
            put(static_cast<const Comment&>(node));
        else
            taken = flush() && node.write(stream);
    }
    bool flush() {
        const auto size = int32_t(buffer.getFillSize());
        int32_t written = 0;
        if (taken && size > 0)
            taken = stream && stream->write(buffer.data(), size, &written) == kResultOk && written == size;
        buffer.setFillSize(0);
        return taken;
    }

private:
    IBStream* stream;
    XmlLine buffer;
    bool taken = true;
};

template <class Part>
bool writePart(IBStream* stream, const Part& part) {
    Output output(stream);
    output.put(part);
    return output.flush();
}

std::string lineOf(int32_t depth) {
    std::string text(size_t(std::max(depth, 0)) + 1, '\t');
    text.front() = '\n';
    return text;
}

/** A line that reformatting began here before: it says nothing of where the closing tag was. */
bool isOwnLine(const ElementData& text, Node* next, int32_t depth) {
    return (nodeAs<Element>(next) || nodeAs<Comment>(next)) && textOf(text) == lineOf(depth);
}

OPtr<ElementData> newLine(int32_t depth) {
    const std::string text = lineOf(depth);
    OPtr<ElementData> node(new ElementData);
    node->setData(text.data(), int32_t(text.size()));
    return node;
}
}  // namespace

bool Attribute::write(IBStream* stream) const {
    return writePart(stream, *this);
}

void ElementData::setData(const void* bytes, int32_t size) {
    const auto count = uint32_t(std::max(size, 0));
    Buffer text(count + 1);  // the bytes may be our own
    text.put(bytes, count);
    text.put('\0');
    text.setFillSize(count);
    data.take(text);
}

bool ElementData::isFormatData() const {
    return textOf(*this).find_first_not_of(kFormat) == std::string_view::npos;
}

bool ElementData::write(IBStream* stream) const {
    return writePart(stream, *this);
}

bool Comment::write(IBStream* stream) const {
    return writePart(stream, *this);
}

/** Whoever loses its last reference here hands its own children over before it goes. */
Element::~Element() {
    std::vector<IPtr<Node>> dying;
    handChildrenTo(dying);
    while (!dying.empty()) {
        const IPtr<Node> node = std::move(dying.back());
        dying.pop_back();
        auto* element = nodeAs<Element>(node);
        if (element && element->refCount == 1)
            element->handChildrenTo(dying);
    }
}

void Element::handChildrenTo(std::vector<IPtr<Node>>& nodes) {
    for (const IPtr<Node>& child : children) {
        auto* element = nodeAs<Element>(child);
        if (element && element->parent == this)
            element->parent = nullptr;
        nodes.push_back(child);
    }
    children.removeAll();
}

Attribute* Element::getAttribute(const tchar* attributeName) const {
    const ConstString wanted(attributeName);
    const auto found = std::ranges::find_if(attributes, [&](Attribute* each) { return each->name == wanted; });
    return found != attributes.end() ? found->get() : nullptr;
}

bool Element::getStringData(String& text) const {
    std::string bytes;
    for (Node* child : children)
        if (const auto* node = nodeAs<ElementData>(child); node && !node->isFormatData())
            bytes += textOf(*node);
    bytes.erase(bytes.find_last_not_of(kTrimmed) + 1);
    bytes.erase(0, bytes.find_first_not_of(kTrimmed));
    return text.fromUTF8(bytes.c_str()) && !text.isEmpty();
}

void Element::reformat(int32_t depth) {
    std::vector<std::pair<Element*, int32_t>> pending = {
        {this, depth}
    };
    while (!pending.empty()) {
        const auto [element, level] = pending.back();
        pending.pop_back();
        element->reformatChildren(level);
        for (Node* child : element->children)
            if (auto* inner = nodeAs<Element>(child))
                pending.emplace_back(inner, level + 1);
    }
}

void Element::reformatChildren(int32_t depth) {
    std::vector<IPtr<Node>> old;
    for (const IPtr<Node>& child : children)
        old.push_back(child);
    children.removeAll();
    bool endsOnOwnLine = false;
    for (size_t index = 0; index < old.size(); ++index) {
        Node* child = old[index];
        const auto* text = nodeAs<ElementData>(child);
        Node* next = index + 1 < old.size() ? old[index + 1].get() : nullptr;
        if (text && !isOwnLine(*text, next, depth + 1))
            endsOnOwnLine = text->isFormatData();
        else if (nodeAs<Element>(child) || nodeAs<Comment>(child))
            addChild(newLine(depth + 1));
        if (!text || !text->isFormatData())
            addChild(child);
    }
    if (endsOnOwnLine)
        addChild(newLine(depth));
}

bool Element::write(IBStream* stream) const {
    struct Open {
        const Element* element;
        TDLinkedList<IPtr<Node>>::Step next;
    };
    Output output(stream);
    std::vector<Open> open;
    const auto begin = [&](const Element& element) {
        output.putStart(element);
        open.push_back({&element, element.children.begin()});
    };
    begin(*this);
    while (!open.empty()) {
        Open& top = open.back();
        if (top.next == top.element->children.end()) {
            output.putEnd(*top.element);
            open.pop_back();
            continue;
        }
        const Node& child = **top.next;
        ++top.next;
        if (child.isA("Element"))
            begin(static_cast<const Element&>(child));
        else
            output.putOther(child);
    }
    return output.flush();
}

bool Document::load(IBStream* stream) {
    root = nullptr;
    DocumentParser builder;
    FXmlParser2 parser(&builder, nullptr);
    const bool whole = parser.process(stream);
    OPtr<Element> tree(builder.takeRoot());
    if (whole)
        root = tree.detach();
    return root;
}

bool Document::save(IBStream* stream, bool reformat) const {
    if (!root || !writePart(stream, kIntro))
        return false;
    auto* element = nodeAs<Element>(root);
    if (reformat && element)
        element->reformat(0);
    return root->write(stream);
}

int32_t DocumentParser::queryInterface(const char* iid, void** obj) {
    if (answerInterface<INewXmlHandler>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

void DocumentParser::startTag(INewXmlParser* parser, const char* name, const char** attributes) {
    if (finished)
        return;
    if (++depth > kMaxDepth) {
        parser->stop();
        return;
    }
    const OPtr<Element> element(new Element(nullptr, current));
    element->name.fromUTF8(name);
    for (; *attributes; attributes += 2) {
        const OPtr<Attribute> attribute(new Attribute);
        attribute->name.fromUTF8(attributes[0]);
        attribute->value.fromUTF8(attributes[1]);
        element->addAttribute(attribute);
    }
    if (current)
        current->addChild(element);
    else
        root = element;
    current = element;
}

void DocumentParser::endTag(INewXmlParser* /*parser*/, const char* /*name*/) {
    --depth;
    if (current && current == root)
        finished = true;
    else if (current)
        current = nodeAs<Element>(current->parent);
}

void DocumentParser::charData(INewXmlParser* /*parser*/, const char* data, int32_t length) {
    if (!current)
        return;
    const OPtr<ElementData> text(new ElementData);
    text->setData(data, length);
    current->addChild(text);
}

void DocumentParser::comment(INewXmlParser* /*parser*/, const char* text) {
    if (!current)
        return;
    const OPtr<Comment> comment(new Comment);
    comment->name.fromUTF8(text);
    current->addChild(comment);
}

}  // namespace Tessarine::Xml
