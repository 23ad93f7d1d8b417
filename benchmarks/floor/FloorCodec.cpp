#include "FloorCodec.h"

#include "Figures.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>
#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace hexmire::bench {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr unsigned kList = 0;
constexpr unsigned kAscii = 16;

/// Bytes of one value of a format; 1 for texts, binary and Boolean.
unsigned Width(unsigned format) {
    switch (format) {
        case 26:  // I2
        case 42:  // U2
            return 2;
        case 28:  // I4
        case 36:  // F4
        case 44:  // U4
            return 4;
        case 24:  // I8
        case 32:  // F8
        case 40:  // U8
            return 8;
        default:
            return 1;
    }
}

std::uint64_t Read(const std::uint8_t* bytes, unsigned width) {
    switch (width) {
        case 1:
            return *bytes;
        case 2: {
            std::uint16_t value = 0;
            std::memcpy(&value, bytes, sizeof(value));
            return __builtin_bswap16(value);
        }
        case 4: {
            std::uint32_t value = 0;
            std::memcpy(&value, bytes, sizeof(value));
            return __builtin_bswap32(value);
        }
        default: {
            std::uint64_t value = 0;
            std::memcpy(&value, bytes, sizeof(value));
            return __builtin_bswap64(value);
        }
    }
}

void Write(std::uint8_t* bytes, std::uint64_t value, unsigned width) {
    value = __builtin_bswap64(value) >> (64 - 8 * width);
    std::memcpy(bytes, &value, width);
}

struct Header {
    unsigned Format;
    std::uint32_t Length;
};

Header ReadHeader(const std::uint8_t*& next) {
    const unsigned first = *next++;
    std::uint32_t length = 0;
    for (unsigned i = first & 3U; i != 0; --i)
        length = length << 8U | *next++;
    return {first >> 2U, length};
}

std::uint64_t SumOf(const std::uint8_t* bytes, unsigned format, std::uint32_t length) {
    std::uint64_t sum = 0;
    const unsigned width = Width(format);
    for (std::uint32_t i = 0; i + width <= length; i += width)
        sum += Read(bytes + i, width);
    return sum;
}

std::uint64_t Walk(const Bytes& body) {
    std::uint64_t sum = 0;
    const std::uint8_t* next = body.data();
    const std::uint8_t* const end = next + body.size();
    while (next != end) {
        const Header header = ReadHeader(next);
        if (header.Format == kList) continue;
        sum += SumOf(next, header.Format, header.Length);
        next += header.Length;
    }
    return sum;
}

// The tree is plain C on purpose: what it costs is what malloc and free cost.

/// An item: its children, a text, or numbers of 8 bytes each, a single one within the node.
struct Node {
    unsigned Format;
    std::uint32_t Count;
    union {
        Node** Children;
        char* Text;
        std::uint64_t* Numbers;
        std::uint64_t Number;
    };
};

void* Allocate(std::size_t size) {
    void* const memory = std::malloc(size);
    if (memory == nullptr) std::abort();
    return memory;
}

Node* Build(const std::uint8_t*& next) {
    const Header header = ReadHeader(next);
    auto* const node = static_cast<Node*>(Allocate(sizeof(Node)));
    node->Format = header.Format;
    node->Count = header.Length;
    if (header.Format == kList) {
        // NOLINTNEXTLINE(bugprone-sizeof-expression): an array of pointers
        node->Children = static_cast<Node**>(Allocate(header.Length * sizeof(Node*)));
        for (std::uint32_t i = 0; i < header.Length; ++i)
            node->Children[i] = Build(next);
        return node;
    }
    if (header.Format == kAscii) {
        node->Text = static_cast<char*>(Allocate(header.Length + 1));
        std::memcpy(node->Text, next, header.Length);
        node->Text[header.Length] = '\0';
    } else {
        const unsigned width = Width(header.Format);
        node->Count = header.Length / width;
        if (node->Count == 1) {
            node->Number = Read(next, width);
        } else {
            node->Numbers =
                static_cast<std::uint64_t*>(Allocate(node->Count * sizeof(std::uint64_t)));
            for (std::uint32_t i = 0; i < node->Count; ++i)
                node->Numbers[i] = Read(next + std::size_t{i} * width, width);
        }
    }
    next += header.Length;
    return node;
}

std::uint64_t ReadTree(const Node* node) {
    if (node->Format == kList) {
        std::uint64_t sum = 0;
        for (std::uint32_t i = 0; i < node->Count; ++i)
            sum += ReadTree(node->Children[i]);
        return sum;
    }
    if (node->Format == kAscii) {
        std::uint64_t sum = 0;
        for (std::uint32_t i = 0; i < node->Count; ++i)
            sum += static_cast<unsigned char>(node->Text[i]);
        return sum;
    }
    if (node->Count == 1) return node->Number;
    std::uint64_t sum = 0;
    for (std::uint32_t i = 0; i < node->Count; ++i)
        sum += node->Numbers[i];
    return sum;
}

void Free(Node* node) {
    if (node->Format == kList) {
        for (std::uint32_t i = 0; i < node->Count; ++i)
            Free(node->Children[i]);
        std::free(node->Children);
    } else if (node->Format == kAscii) {
        std::free(node->Text);
    } else if (node->Count != 1) {
        std::free(node->Numbers);
    }
    std::free(node);
}

std::uint8_t* WriteHeader(std::uint8_t* out, unsigned format, std::uint32_t length) {
    const unsigned lengthBytes = length > 0xFFFF ? 3 : length > 0xFF ? 2 : 1;
    *out++ = static_cast<std::uint8_t>(format << 2U | lengthBytes);
    for (unsigned shift = lengthBytes * 8; shift != 0; shift -= 8)
        *out++ = static_cast<std::uint8_t>(length >> (shift - 8));
    return out;
}

std::uint8_t* Encode(const Node* node, std::uint8_t* out) {
    if (node->Format == kList) {
        out = WriteHeader(out, node->Format, node->Count);
        for (std::uint32_t i = 0; i < node->Count; ++i)
            out = Encode(node->Children[i], out);
        return out;
    }
    const unsigned width = Width(node->Format);
    const std::uint32_t length = node->Count * width;
    out = WriteHeader(out, node->Format, length);
    if (node->Format == kAscii) {
        std::memcpy(out, node->Text, length);
    } else if (node->Count == 1) {
        Write(out, node->Number, width);
    } else {
        for (std::uint32_t i = 0; i < node->Count; ++i)
            Write(out + std::size_t{i} * width, node->Numbers[i], width);
    }
    return out + length;
}

void SwapPlainly(const std::uint8_t* from, std::uint8_t* to, std::size_t size) {
    for (std::size_t i = 0; i + 4 <= size; i += 4) {
        std::uint32_t value = 0;
        std::memcpy(&value, from + i, sizeof(value));
        value = __builtin_bswap32(value);
        std::memcpy(to + i, &value, sizeof(value));
    }
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) void SwapWide(const std::uint8_t* from,
                                              std::uint8_t* to,
                                              std::size_t size) {
    const __m256i order = _mm256_set_epi8(
        // clang-format off
        12, 13, 14, 15, 8, 9, 10, 11, 4, 5, 6, 7, 0, 1, 2, 3,
        12, 13, 14, 15, 8, 9, 10, 11, 4, 5, 6, 7, 0, 1, 2, 3
        // clang-format on
    );
    std::size_t i = 0;
    for (; i + 32 <= size; i += 32) {
        const auto piece = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from + i));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + i), _mm256_shuffle_epi8(piece, order));
    }
    SwapPlainly(from + i, to + i, size - i);
}

void Swap(const std::uint8_t* from, std::uint8_t* to, std::size_t size) {
    static const bool kWide = __builtin_cpu_supports("avx2") != 0;
    return kWide ? SwapWide(from, to, size) : SwapPlainly(from, to, size);
}
#else
void Swap(const std::uint8_t* from, std::uint8_t* to, std::size_t size) {
    SwapPlainly(from, to, size);
}
#endif

/// What the walk and the tree read is the same, and the tree is written as it came.
void Check(const Bytes& body, const std::string& name) {
    const std::uint8_t* next = body.data();
    Node* const tree = Build(next);
    Bytes out(body.size());
    const bool same = ReadTree(tree) == Walk(body) &&
                      Encode(tree, out.data()) == out.data() + out.size() && out == body;
    Free(tree);
    if (!same) throw std::runtime_error("the tree of " + name + " is wrong");
}

}  // namespace

void RaceFloorCodec(std::string_view dataDirectory) {
    Figures figures;
    for (const char* const name : {"w1a", "w1b", "w1c", "w1d", "w1e"}) {
        const Bytes body = ReadBody(dataDirectory, name);
        Check(body, name);
        const auto measure = [&](const char* what, auto function) {
            figures.Add(std::string(name) + "_" + what + "_ns", NanosecondsOf(function));
        };
        Bytes out(body.size());
        measure("walk", [&] { Keep(Walk(body)); });
        measure("tree", [&] {
            const std::uint8_t* next = body.data();
            Node* const tree = Build(next);
            Keep(ReadTree(tree));
            Free(tree);
        });
        const std::uint8_t* next = body.data();
        Node* const tree = Build(next);
        measure("encode", [&] { Keep(Encode(tree, out.data())); });
        Free(tree);
        measure("memcpy", [&] {
            std::memcpy(out.data(), body.data(), body.size());
            Keep(out.data());
        });
        measure("swap", [&] {
            Swap(body.data(), out.data(), body.size());
            Keep(out.data());
        });
    }
    figures.Print();
}

}  // namespace hexmire::bench
