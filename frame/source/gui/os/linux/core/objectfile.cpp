#include "objectfile.h"
#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <link.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>
#include <vector>

namespace Tessarine {
namespace {
using Header = ElfW(Ehdr);
using Segment = ElfW(Phdr);
using Entry = ElfW(Dyn);

constexpr size_t kMaxSegments = 512;  // linkers make about ten
constexpr size_t kMaxEntries = 4096;  // of the loader's table: linkers make about thirty
constexpr const char* kOtherMachine = "other";

struct MachineRow {
    uint16_t number;
    unsigned char width;
    const char* name;
};
constexpr MachineRow kMachines[] = {
    {EM_386,     ELFCLASS32, "i386"   },
    {EM_ARM,     ELFCLASS32, "armv7l" },
    {EM_X86_64,  ELFCLASS64, "x86_64" },
    {EM_AARCH64, ELFCLASS64, "aarch64"},
    {EM_PPC64,   ELFCLASS64, "ppc64le"},
    {EM_RISCV,   ELFCLASS64, "riscv64"},
};

/** A file that closes itself; reads are whole or not at all. */
class File {
public:
    /** A device isn't even opened, which alone can do something to it. */
    explicit File(const char* path)
        : descriptor(isRegular(path) ? open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK) : -1) {}
    ~File() {
        if (descriptor >= 0)
            close(descriptor);
    }
    File(const File&) = delete;

    bool readAt(uint64_t offset, void* target, size_t size) const {
        return descriptor >= 0 && offset <= INT64_MAX &&
               pread(descriptor, target, size, off_t(offset)) == ssize_t(size);
    }
    /** 0: there is no such file. */
    uint64_t size() const {
        struct stat status = {};
        return descriptor >= 0 && fstat(descriptor, &status) == 0 ? uint64_t(status.st_size) : 0;
    }

private:
    static bool isRegular(const char* path) {
        struct stat status = {};
        return stat(path, &status) == 0 && S_ISREG(status.st_mode);
    }

    int descriptor;
};

/** What the program was built for. */
const Header& ownHeader() {
    static const Header header = [] {
        Header own = {};
        File("/proc/self/exe").readAt(0, &own, sizeof(own));
        return own;
    }();
    return header;
}

/** Up to e_machine a header is the same in all widths. */
bool isOfOwnMachine(const Header& header) {
    const Header& own = ownHeader();
    return header.e_ident[EI_CLASS] == own.e_ident[EI_CLASS] && header.e_ident[EI_DATA] == own.e_ident[EI_DATA] &&
           header.e_machine == own.e_machine;
}

const char* nameOf(const Header& header) {
    if (header.e_ident[EI_DATA] != ownHeader().e_ident[EI_DATA])
        return kOtherMachine;
    const auto row = std::ranges::find_if(kMachines, [&](const MachineRow& each) {
        return each.number == header.e_machine && each.width == header.e_ident[EI_CLASS];
    });
    return row != std::end(kMachines) ? row->name : kOtherMachine;
}

bool liesWithin(uint64_t offset, uint64_t size, uint64_t end) {
    return offset <= end && size <= end - offset;
}

/** What is mapped is there: behind the end of a file a mapping has no memory. Of a segment with nothing from the file
    only the page that it starts within is mapped, and none when it starts with one: a small file may end before it. */
bool isThere(const Segment& mapped, uint64_t fileSize) {
    if (mapped.p_filesz > 0)
        return mapped.p_filesz <= mapped.p_memsz && liesWithin(mapped.p_offset, mapped.p_filesz, fileSize);
    const uint64_t pageSize = uint64_t(getpagesize());
    return mapped.p_vaddr % pageSize == 0 || mapped.p_offset - mapped.p_offset % pageSize < fileSize;
}

/** It is mapped, and the part with it, at the same place in the file and in memory. */
bool contains(const Segment& whole, const Segment& part) {
    const uint64_t start = part.p_offset - whole.p_offset;
    return whole.p_type == PT_LOAD && part.p_offset >= whole.p_offset && part.p_vaddr - whole.p_vaddr == start &&
           liesWithin(start, part.p_filesz, whole.p_filesz);
}

/** The table that the loader follows, and never doubts, names its symbols. Where a copy was broken off in a file that
    had its size already, it is empty. */
bool namesSymbols(const File& file, const Segment& dynamic) {
    std::vector<Entry> entries(std::min<uint64_t>(dynamic.p_filesz / sizeof(Entry), kMaxEntries));
    if (!file.readAt(dynamic.p_offset, entries.data(), entries.size() * sizeof(Entry)))
        return false;
    const auto end = std::ranges::find(entries, DT_NULL, &Entry::d_tag);
    const auto names = [&](auto tag) { return std::ranges::find(entries.begin(), end, tag, &Entry::d_tag) != end; };
    return end != entries.end() && names(DT_STRTAB) && names(DT_SYMTAB);
}

/** What the loader does with one of the segments can't lead it astray. */
bool isGood(const Segment& segment, const std::vector<Segment>& all, const File& file) {
    if (segment.p_type == PT_LOAD)
        return isThere(segment, file.size());
    const auto hasIt = [&segment](const Segment& each) { return contains(each, segment); };
    return segment.p_type != PT_DYNAMIC || (std::ranges::any_of(all, hasIt) && namesSymbols(file, segment));
}

bool isWhole(const File& file, const Header& header) {
    if (header.e_phentsize != sizeof(Segment) || header.e_phnum == 0 || header.e_phnum > kMaxSegments)
        return false;
    std::vector<Segment> segments(header.e_phnum);
    if (!file.readAt(header.e_phoff, segments.data(), segments.size() * sizeof(Segment)))
        return false;
    const auto isDynamic = [](const Segment& each) { return each.p_type == PT_DYNAMIC; };
    const auto goes = [&](const Segment& each) { return isGood(each, segments, file); };
    return std::ranges::any_of(segments, isDynamic) && std::ranges::all_of(segments, goes);
}
}  // namespace

const char* machineOfProgram() {
    static const auto name = [] {
        std::array<char, sizeof(utsname::machine)> machine = {};
        utsname system = {};
        uname(&system);
        std::ranges::copy(system.machine, machine.begin());
        return machine;
    }();
    return name.data();
}

const char* machineOfObject(const std::string& path) {
    const File file(path.c_str());
    Header header = {};
    if (!file.readAt(0, &header, sizeof(header)) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0)
        return nullptr;
    if (!isOfOwnMachine(header))
        return nameOf(header);
    return header.e_type == ET_DYN && isWhole(file, header) ? machineOfProgram() : nullptr;
}

}  // namespace Tessarine
