#pragma once
#include "base/source/cmobject.h"
#include "base/source/fbuffer.h"
#include "base/source/fstring.h"
#include "base/source/tarray.h"
#include "base/source/tdlinkedlist.h"
#include "pluginterfaces/base/ixmlparser.h"
#include "pluginterfaces/base/smartpointer.h"
#include <cstring>
#include <vector>

namespace Tessarine {
class IBStream;

/** An XML document as a tree that can be changed, indented anew and saved. Names and values are 16-bit, text between tags is
    UTF-8.

    Owns      a node holds a reference on each of its children and attributes.
    Depth     deep trees neither destroy nor write themselves by recursion; none deeper than 1,000 elements is loaded.
    Threads   one at a time. */
namespace Xml {

class Node : public FObject {
public:
    Node() = default;
    explicit Node(const tchar* nodeName) : name(nodeName) {}
    /** false: the stream didn't take it all. */
    virtual bool write(IBStream* stream) const = 0;
    DECLARE_CLASS_NAME(Node, FObject)

    String name;
};

class Attribute : public Node {
public:
    Attribute() = default;
    Attribute(const tchar* attributeName, const tchar* attributeValue) : Node(attributeName), value(attributeValue) {}
    /** Both with entities. */
    bool write(IBStream* stream) const override;
    DECLARE_CLASS_NAME(Attribute, Node)

    String value;
};

/** A piece of text. Neighbours stay apart as they came. */
class ElementData : public Node {
public:
    /** size bytes of UTF-8. */
    void setData(const void* bytes, int32_t size);
    /** There is only white space. */
    bool isFormatData() const;
    /** With entities. */
    bool write(IBStream* stream) const override;
    DECLARE_CLASS_NAME(ElementData, Node)

    Buffer data;  // up to its closing zero, which the fill size doesn't count
};

/** Its name is its text, which goes out as it is. */
class Comment : public Node {
public:
    using Node::Node;
    bool write(IBStream* stream) const override;
    DECLARE_CLASS_NAME(Comment, Node)
};

class Element : public Node {
public:
    explicit Element(const tchar* elementName = nullptr, Node* parent = nullptr) : Node(elementName), parent(parent) {}
    ~Element() override;

    /** Shares the child. */
    bool addChild(Node* child) { return child && children.append(IPtr<Node>(child)); }
    /** index is at most their number. */
    bool insertChildAt(Node* child, int32_t index) { return child && children.insertAt(IPtr<Node>(child), index); }
    bool removeChild(Node* child) { return children.remove(IPtr<Node>(child)); }
    bool removeChildAt(int32_t index) { return children.removeAt(index); }
    bool addAttribute(Attribute* attribute) { return attribute && attributes.add(IPtr<Attribute>(attribute)); }
    bool removeAttribute(Attribute* attribute) { return attributes.remove(IPtr<Attribute>(attribute)); }
    /** The first of this very name; null: there is none. */
    Attribute* getAttribute(const tchar* attributeName) const;
    /** All text that isn't only white space, in one and trimmed. false: there is none, or it isn't UTF-8. */
    bool getStringData(String& text) const;
    /** Puts each child element and comment on a line of its own, tabs for the depth. A closing tag gets one only when there
        was white space among the children and no other text behind it. */
    void reformat(int32_t depth);
    bool write(IBStream* stream) const override;
    DECLARE_CLASS_NAME(Element, Node)

    Node* parent;  // borrowed, for who asks; adding and removing leave it as it is
    TDLinkedList<IPtr<Node>> children;
    TArray<IPtr<Attribute>> attributes{0, -1};

private:
    void handChildrenTo(std::vector<IPtr<Node>>& nodes);
    void reformatChildren(int32_t depth);
};

class Document : public FObject {
public:
    /** Takes the reference over. */
    explicit Document(Node* rootNode = nullptr) : root(rootNode) {}
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    /** Replaces the tree; false, and there is none: not well formed, or too deep. */
    bool load(IBStream* stream);
    /** Behind a byte order mark and the declaration, lines end with a line feed. reformat changes the tree. */
    bool save(IBStream* stream, bool reformat) const;
    Node* getRoot() const { return root; }
    DECLARE_CLASS_NAME(Document, FObject)

private:
    OPtr<Node> root;
};

/** Builds the tree from what the reader tells. Comments in front of the root are dropped, those behind it become its. */
class DocumentParser : public FObject, public INewXmlHandler {
public:
    int32_t queryInterface(const char* iid, void** obj) override;
    void startTag(INewXmlParser* parser, const char* name, const char** attributes) override;
    void endTag(INewXmlParser* parser, const char* name) override;
    void charData(INewXmlParser* parser, const char* data, int32_t length) override;
    void comment(INewXmlParser* parser, const char* text) override;
    FORWARD_REFCOUNT(FObject)

    /** Hands the tree over; null without one. */
    Element* takeRoot() { return root.detach(); }

private:
    OPtr<Element> root;
    Element* current = nullptr;  // borrowed: part of the tree
    bool finished = false;
    int32_t depth = 0;
};

}  // namespace Xml
}  // namespace Tessarine
