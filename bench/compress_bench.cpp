// CRC-32 and compressed blocks beside other libraries.
//   crc32         the chosen kernel, and the portable one; crc32clmul is that of 128 bits
//   deflate       doAltCompress into a held binary beside compress2 of the same zlib, at the levels
//                 1, 6 and 9, of text; deflatenoise of bytes that cannot be compressed, at level 6
//   inflate       doAltUncompress beside uncompress, of text and of noise
//   inflatefresh  the same into a new value each time, beside a new block of the known size
// The other results go into memory that is used again. Before anything is timed, all CRCs have to
// agree, and every block has to come out as it went in.

#include "compress/crc32kernels.h"
#include "sys/compress.h"
#include "sys/params.h"

#include <benchmark/benchmark.h>
#include <isa-l/crc.h>
#include <libdeflate.h>
#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using nomutil::compress::Crc32Kernel;
using Bytes = std::vector<unsigned char>;

unsigned size32(std::size_t size) {
  return static_cast<unsigned>(size);
}

// ---- CRC-32 ----

using Crc = std::function<std::uint32_t(std::uint32_t, Bytes&)>;

std::uint32_t oursCrc(std::uint32_t crc, Bytes& bytes) {
  unsigned length = size32(bytes.size());
  return ~compute_CRC32(bytes.data(), &length, &(crc = ~crc));
}

Crc kernelCrc(const Crc32Kernel& kernel) {
  return [&kernel](std::uint32_t crc, Bytes& bytes) {
    return ~kernel.update(~crc, bytes.data(), bytes.size());
  };
}

// Each CRC goes on from the one before.
bool addCrc(const std::string& size, std::size_t byteCount) {
  Bytes bytes(byteCount);
  std::mt19937_64 random(1);
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
  const Crc libdeflate = [](std::uint32_t crc, Bytes& all) {
    return libdeflate_crc32(crc, all.data(), all.size());
  };
  const struct {
    std::string name;
    Crc crc;
  } kSides[] = {
      {"crc32/ours/", oursCrc},
      {"crc32/ours-portable/", kernelCrc(nomutil::compress::kPortableCrc32)},
      {"crc32/libdeflate/", libdeflate},
      {"crc32/isal/",
       [](std::uint32_t crc, Bytes& all) { return crc32_gzip_refl(crc, all.data(), all.size()); }},
      {"crc32/zlib/",
       [](std::uint32_t crc, Bytes& all) {
         return static_cast<std::uint32_t>(crc32(crc, all.data(), size32(all.size())));
       }},
      {"crc32clmul/ours/", kernelCrc(nomutil::compress::kClmulCrc32)},
      {"crc32clmul/libdeflate/", libdeflate},
  };
  for (const auto& [name, crc] : kSides) {
    if (crc(12345, bytes) != libdeflate(12345, bytes)) {
      std::cerr << name << " gives another CRC\n";
      return false;
    }
    benchmark::RegisterBenchmark(
        (name + size).c_str(), [bytes, run = crc](benchmark::State& state) mutable {
          std::uint32_t value = 0;
          for (auto unused : state) value = run(value, bytes);
          benchmark::DoNotOptimize(value);
          state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
        });
  }
  return true;
}

// ---- Blocks ----

// A held binary that keeps its memory when it is emptied.
class Held {
 public:
  Held() { paramCreateKoraBinary(_parameter, nullptr, 0, kKoraNoMaximum, 0); }
  ~Held() { paramDeleteKoraBinary(_parameter); }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;

  DskParam* cleared() {
    paramcpy(parameter(), static_cast<const void*>(""), 0, 0);
    return _parameter;
  }
  DskParam* parameter() { return _parameter; }
  Bytes bytes() {
    unsigned char* data = nullptr;
    unsigned length = 0;
    DerefBinary(_parameter, &data, &length);
    return Bytes(data, data + length);
  }

 private:
  ShortDskParam _parameter;
};

Bytes makeText(std::size_t byteCount) {
  std::mt19937_64 random(1);
  std::vector<std::string> words(2000);
  for (std::string& word : words) {
    for (std::uint64_t left = 2 + random() % 9; left != 0; --left) {
      word += static_cast<char>('a' + random() % 26);
    }
  }
  Bytes text;
  while (text.size() < byteCount) {
    const std::string& word = words[random() % (1 + random() % words.size())];
    text.insert(text.end(), word.begin(), word.end());
    text.push_back(' ');
  }
  text.resize(byteCount);
  return text;
}

Bytes makeNoise(std::size_t byteCount) {
  std::mt19937_64 random(1);
  Bytes noise(byteCount);
  for (unsigned char& byte : noise) byte = static_cast<unsigned char>(random());
  return noise;
}

Bytes blockOf(const Bytes& source, int level) {
  Held target;
  doAltCompress(false, source.data(), size32(source.size()), 'z' + 256 * level, target.parameter());
  return target.bytes();
}

void add(const std::string& name, std::size_t byteCount, const std::function<void()>& run) {
  benchmark::RegisterBenchmark(name.c_str(), [byteCount, run](benchmark::State& state) {
    for (auto unused : state) run();
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(byteCount));
  });
}

void addDeflate(const std::string& operation, const std::string& arguments, const Bytes& source,
                int level) {
  const auto held = std::make_shared<Held>();
  add(operation + "/ours/" + arguments, source.size(), [=] {
    doAltCompress(false, source.data(), size32(source.size()), 'z' + 256 * level, held->cleared());
  });
  const auto room = std::make_shared<Bytes>(compressBound(source.size()));
  add(operation + "/zlib/" + arguments, source.size(), [=] {
    uLongf length = room->size();
    compress2(room->data(), &length, source.data(), source.size(), level);
    benchmark::DoNotOptimize(room->data());
  });
}

void addInflate(const std::string& arguments, const Bytes& source) {
  const auto block = std::make_shared<Bytes>(blockOf(source, 6));
  const auto expandInto = [block](DskParam* target) {
    doAltUncompress(false, block->data(), size32(block->size()), target);
  };
  const auto uncompressInto = [block, size = source.size()](unsigned char* room) {
    uLongf length = size;
    uncompress(room, &length, block->data() + 1, block->size() - 1);
    benchmark::DoNotOptimize(room);
  };
  const auto held = std::make_shared<Held>();
  const auto room = std::make_shared<Bytes>(source.size());
  add("inflate/ours/" + arguments, source.size(), [=] { expandInto(held->cleared()); });
  add("inflate/zlib/" + arguments, source.size(), [=] { uncompressInto(room->data()); });
  add("inflatefresh/ours/" + arguments, source.size(),
      [=] { expandInto(std::make_unique<Held>()->parameter()); });
  add("inflatefresh/zlib/" + arguments, source.size(), [=, size = source.size()] {
    uncompressInto(std::unique_ptr<unsigned char[]>(new unsigned char[size]).get());
  });
}

bool addBlocks(const std::string& size, std::size_t byteCount) {
  const Bytes text = makeText(byteCount), noise = makeNoise(byteCount);
  for (const Bytes* source : {&text, &noise}) {
    Bytes block = blockOf(*source, 6);
    Held again;
    doAltUncompress(false, block.data(), size32(block.size()), again.parameter());
    if (again.bytes() != *source) {
      std::cerr << "a block does not come out as it went in\n";
      return false;
    }
  }
  for (const int level : {1, 6, 9}) {
    addDeflate("deflate", size + "level" + std::to_string(level), text, level);
  }
  addDeflate("deflatenoise", size, noise, 6);
  addInflate(size + "text", text);
  addInflate(size + "noise", noise);
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  if (!addCrc("64B", 64) || !addCrc("4KiB", 4096) || !addCrc("1MiB", 1 << 20)) return 1;
  if (!addBlocks("1KiB", 1024) || !addBlocks("64KiB", 65536) || !addBlocks("1MiB", 1 << 20)) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
