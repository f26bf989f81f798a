// The CRC-32 of files, each with its size: "cbf43926  9  FILE" for the bytes "123456789".
#include "checksum.h"
#include "commands.h"
#include "runcommand.h"
#include "transfer.h"

#include "nomos/intl.h"

#include <nlohmann/json.hpp>
#include <vector>

namespace nomtool {
namespace {

using Json = nlohmann::ordered_json;

struct Sum {
  std::uint64_t byteCount = 0;
  Checksum checksum;
};

Sum sumOf(const std::string& path, std::ostream& err) {
  constexpr std::size_t kPiece = std::size_t{1} << 18;
  ByteReader reader(path);
  Progress progress(err, reader.size(), showsProgress(err));
  std::vector<unsigned char> piece(kPiece);
  Sum sum;
  while (const std::size_t count = reader.read(piece.data(), piece.size())) {
    sum.checksum.add(piece.data(), static_cast<std::uint32_t>(count));
    sum.byteCount += count;
    progress.advance(count);
  }
  return sum;
}

}  // namespace

int crcCommand(const CrcOptions& options, std::ostream& out, std::ostream& err) {
  Json list = Json::array();
  int exit = kExitDone;
  for (const std::string& file : options.files) {
    const int status = runCommand(err, [&] {
      const Sum sum = sumOf(file, err);
      char crc[16];
      intlSnprintf(crc, sizeof crc, "%08x", sum.checksum.value());
      list.push_back({{"file", file}, {"bytes", sum.byteCount}, {"crc32", crc}});
      if (!options.json) out << crc << "  " << sum.byteCount << "  " << file << '\n';
    });
    if (status != kExitDone) exit = status;
  }
  if (options.json) out << list.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
  return exit;
}

}  // namespace nomtool
