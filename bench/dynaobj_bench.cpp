// Dynamic objects beside their peers: 20 properties, 7 of them strings, with names of 6 to 19
// characters.
//
//   get      a value by name, all properties in a random order, looked at where it lies: a number
//            is loaded, of a string the place and the length are taken.
//   param    the same in a parameter, a string copied to the block that it describes; peers copy
//            strings to the reader's memory.
//   index    as get, by index; a map has none. indexParam as param.
//   set      a value by name, of the same length as before.
//   copy     an object rebuilt from the images of another and released; a map copied; a message
//            copied (protobufCopy), or written and parsed (protobufWire); a flexbuffer, which
//            cannot be changed, copied as bytes; JSON copied, or as CBOR (nlohmannWire).
//   define   an object made from nothing: every property defined and set.
//   first    rebuilt and asked for one value by name.
//
// Peers: std::unordered_map and absl::flat_hash_map from std::string to std::variant, a dynamic
// message of protobuf, a flexbuffer, nlohmann::json. Before anything is timed, all sides have to
// give the same values.

#include "sys/dynaobj.h"
#include "sys/params.h"

#include <absl/container/flat_hash_map.h>
#include <benchmark/benchmark.h>
#include <flatbuffers/flexbuffers.h>
#include <google/protobuf/descriptor.h>
#include <google/protobuf/descriptor.pb.h>
#include <google/protobuf/dynamic_message.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

namespace {

struct Property {
  const char* name;
  const char* text;  // null for a number
  std::int64_t number;
};
constexpr std::array<Property, 20> kProperties = {{
    {"street", "12 Long Meadow Lane", 0},
    {"number", nullptr, 12},
    {"city_name", "Christchurch", 0},
    {"postcode", nullptr, 8011},
    {"country", "New Zealand", 0},
    {"latitude", nullptr, -43531},
    {"longitude", nullptr, 172636},
    {"customer_number", nullptr, 7001234},
    {"first_name", "Josephine", 0},
    {"family_name", "Featherstonehaugh", 0},
    {"date_of_birth", nullptr, 2440588},
    {"orders_this_year", nullptr, 17},
    {"orders_last_year", nullptr, 23},
    {"balance", nullptr, -1200},
    {"credit_limit_cents", nullptr, 50000},
    {"email_address", "jo@featherstone.example", 0},
    {"telephone_business", "+64 3 555 0123", 0},
    {"last_contact_date", nullptr, 2460000},
    {"preferred_language", nullptr, 5},
    {"loyalty_card_number", nullptr, 99887766554},
}};

// What a read leaves behind.
struct Read {
  std::string_view text;
  std::int64_t number = 0;
  char memory[64];

  void take(std::string_view from) { text = from; }
  void keep() {
    std::memcpy(memory, text.data(), text.size());
    text = {memory, text.size()};
  }
};

// ---- The sides ----

class Ours {
 public:
  Ours() : _object(DynamicObject::createInstance(DskObjectId{}, DynamicObject::kKoraKind)) {}
  explicit Ours(DynamicObject* object) : _object(object) {}
  void define(const Property& property) {
    if (property.text == nullptr) {
      _object->addAndSetAttributeValue(property.name, DSKINTEGER64, 8, &property.number);
    } else {
      const auto length = static_cast<std::uint32_t>(std::strlen(property.text));
      _object->addAndSetAttributeValue(property.name, DSKCSTRING, length, property.text);
    }
  }
  void get(std::size_t i, Read& to) const { _look(kProperties[i].name, i, to); }
  void getAt(std::size_t i, Read& to) const { _look(static_cast<std::uint32_t>(i + 1), i, to); }
  void param(std::size_t i, Read& to) const { _copy(kProperties[i].name, i, to); }
  void paramAt(std::size_t i, Read& to) const { _copy(static_cast<std::uint32_t>(i + 1), i, to); }
  void set(std::size_t i) {
    const Property& property = kProperties[i];
    ShortDskParam value(property.text != nullptr ? DSKCSTRING : DSKINTEGER64, 0, 0);
    if (property.text != nullptr)
      value.setValue(property.text);
    else
      value.setValue(property.number);
    _object->setPropertyValue(property.name, value);
  }
  Ours copy() const {
    Ours made;
    const auto& descriptions = _object->getPropertyDescriptions();
    const auto& values = _object->getValues();
    const auto& longValues = _object->getLongValues();
    made._object->setPropertyDescriptions(descriptions.data(), descriptions.length());
    made._object->setValues(values.data(), values.length());
    made._object->setLongValues(longValues.data(), longValues.length());
    return made;
  }

 private:
  template <class Key>
  void _look(Key key, std::size_t i, Read& to) const {
    std::uint32_t length = 0;
    const unsigned char* bytes = nullptr;
    _object->getPropertyValue(key, length, bytes);
    if (kProperties[i].text != nullptr) {
      to.take({reinterpret_cast<const char*>(bytes), length});
    } else {
      std::memcpy(&to.number, bytes, sizeof to.number);
    }
  }
  template <class Key>
  void _copy(Key key, std::size_t i, Read& to) const {
    const bool isText = kProperties[i].text != nullptr;
    ShortDskParam value(isText ? DSKSTRINGBLOCK : DSKNULL, 0, 0);
    if (isText) value.setValue(DskStringBlock{to.memory, 0, 0, sizeof to.memory - 1});
    _object->getPropertyValue(key, value);
    if (isText) {
      to.take({to.memory, value.getValue<DskStringBlock>().length});
    } else {
      to.number = value.getValue<std::int64_t>();
    }
  }

  struct Release {
    void operator()(DynamicObject* object) const { DynamicObject::deleteInstance(object); }
  };
  std::unique_ptr<DynamicObject, Release> _object;
};

using Variant = std::variant<std::int64_t, double, bool, std::string>;

template <class Map>
class MapSide {
 public:
  void define(const Property& property) {
    if (property.text == nullptr)
      _map.emplace(property.name, property.number);
    else
      _map.emplace(property.name, property.text);
  }
  void get(std::size_t i, Read& to) const {
    const Variant& value = _find(kProperties[i].name)->second;
    if (const auto* const text = std::get_if<std::string>(&value))
      to.take(*text);
    else
      to.number = std::get<std::int64_t>(value);
  }
  void set(std::size_t i) {
    const Property& property = kProperties[i];
    Variant& value = const_cast<Variant&>(_find(property.name)->second);
    if (property.text == nullptr)
      value = property.number;
    else if (auto* const text = std::get_if<std::string>(&value))
      *text = property.text;
  }
  MapSide copy() const { return *this; }

 private:
  // A map of absl is searched by the characters, that of the standard library by a string.
  auto _find(const char* name) const { return _map.find(name); }
  Map _map;
};
using Unordered = MapSide<std::unordered_map<std::string, Variant>>;
using FlatHash = MapSide<absl::flat_hash_map<std::string, Variant>>;

class Protobuf {
 public:
  Protobuf() : _message(prototype()->New()) {}
  void define(const Property& property) { _set(property); }
  void get(std::size_t i, Read& to) const {
    _read(_message->GetDescriptor()->FindFieldByName(kProperties[i].name), to);
  }
  void getAt(std::size_t i, Read& to) const {
    _read(_message->GetDescriptor()->field(static_cast<int>(i)), to);
  }
  void set(std::size_t i) { _set(kProperties[i]); }
  Protobuf copy() const {
    Protobuf made;
    made._message->CopyFrom(*_message);
    return made;
  }
  Protobuf wire() const {
    Protobuf made;
    made._message->ParseFromString(_message->SerializeAsString());
    return made;
  }

 private:
  static const google::protobuf::Message* prototype() {
    static google::protobuf::DescriptorPool pool;
    static google::protobuf::DynamicMessageFactory factory(&pool);
    static const google::protobuf::Message* const made = [] {
      google::protobuf::FileDescriptorProto file;
      file.set_name("object.proto");
      auto* const message = file.add_message_type();
      message->set_name("Object");
      int number = 0;
      for (const Property& property : kProperties) {
        auto* const field = message->add_field();
        field->set_name(property.name);
        field->set_number(++number);
        using Proto = google::protobuf::FieldDescriptorProto;
        field->set_label(Proto::LABEL_OPTIONAL);
        field->set_type(property.text != nullptr ? Proto::TYPE_STRING : Proto::TYPE_INT64);
      }
      return factory.GetPrototype(pool.BuildFile(file)->message_type(0));
    }();
    return made;
  }
  void _read(const google::protobuf::FieldDescriptor* field, Read& to) const {
    const auto* const reflection = _message->GetReflection();
    if (field->cpp_type() == google::protobuf::FieldDescriptor::CPPTYPE_STRING) {
      std::string scratch;
      to.take(reflection->GetStringReference(*_message, field, &scratch));
    } else {
      to.number = reflection->GetInt64(*_message, field);
    }
  }
  void _set(const Property& property) {
    const auto* const field = _message->GetDescriptor()->FindFieldByName(property.name);
    const auto* const reflection = _message->GetReflection();
    if (property.text != nullptr)
      reflection->SetString(_message.get(), field, property.text);
    else
      reflection->SetInt64(_message.get(), field, property.number);
  }
  std::unique_ptr<google::protobuf::Message> _message;
};

class Flex {
 public:
  // Is written whole.
  void define(const Property& last) {
    if (last.name != kProperties.back().name) return;
    flexbuffers::Builder builder;
    builder.Map([&] {
      for (const Property& property : kProperties) {
        if (property.text != nullptr)
          builder.String(property.name, property.text);
        else
          builder.Int(property.name, property.number);
      }
    });
    builder.Finish();
    _bytes = builder.GetBuffer();
  }
  void get(std::size_t i, Read& to) const {
    const auto value = flexbuffers::GetRoot(_bytes).AsMap()[kProperties[i].name];
    if (value.IsString())
      to.take({value.AsString().c_str(), value.AsString().length()});
    else
      to.number = value.AsInt64();
  }
  Flex copy() const { return *this; }

 private:
  std::vector<std::uint8_t> _bytes;
};

class Json {
 public:
  void define(const Property& property) {
    if (property.text != nullptr)
      _json[property.name] = property.text;
    else
      _json[property.name] = property.number;
  }
  void get(std::size_t i, Read& to) const {
    const auto& value = *_json.find(kProperties[i].name);
    if (value.is_string())
      to.take(value.get_ref<const std::string&>());
    else
      to.number = value.get<std::int64_t>();
  }
  void set(std::size_t i) { define(kProperties[i]); }
  Json copy() const { return *this; }
  Json wire() const {
    Json made;
    made._json = nlohmann::json::from_cbor(nlohmann::json::to_cbor(_json));
    return made;
  }

 private:
  nlohmann::json _json;
};

// ---- What is timed ----

template <class Side>
Side defined() {
  Side side;
  for (const Property& property : kProperties) side.define(property);
  return side;
}

// More accesses than a branch predictor learns.
std::vector<std::size_t> randomOrder() {
  std::mt19937 random(11);
  std::vector<std::size_t> order(4096);
  for (std::size_t& i : order) i = random() % kProperties.size();
  return order;
}

template <class Side, class Access>
void access(benchmark::State& state, Access use) {
  Side side = defined<Side>();
  const auto order = randomOrder();
  Read read;
  for (auto _ : state) {
    for (const std::size_t i : order) {
      use(side, i, read);
      benchmark::DoNotOptimize(read);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(order.size()));
}
template <class Side>
void get(benchmark::State& state) {
  access<Side>(state, [](const Side& side, std::size_t i, Read& to) { side.get(i, to); });
}
// With the copy, where the side itself does not make it.
template <class Side>
void param(benchmark::State& state) {
  access<Side>(state, [](const Side& side, std::size_t i, Read& to) {
    if constexpr (requires { side.param(i, to); }) {
      side.param(i, to);
    } else {
      side.get(i, to);
      if (kProperties[i].text != nullptr) to.keep();
    }
  });
}
template <class Side>
void indexParam(benchmark::State& state) {
  access<Side>(state, [](const Side& side, std::size_t i, Read& to) {
    if constexpr (requires { side.paramAt(i, to); }) {
      side.paramAt(i, to);
    } else {
      side.getAt(i, to);
      if (kProperties[i].text != nullptr) to.keep();
    }
  });
}
template <class Side>
void index(benchmark::State& state) {
  access<Side>(state, [](const Side& side, std::size_t i, Read& to) { side.getAt(i, to); });
}
template <class Side>
void set(benchmark::State& state) {
  access<Side>(state, [](Side& side, std::size_t i, Read&) { side.set(i); });
}
template <class Side>
void copy(benchmark::State& state) {
  const Side side = defined<Side>();
  for (auto _ : state) benchmark::DoNotOptimize(side.copy());
}
template <class Side>
void wire(benchmark::State& state) {
  const Side side = defined<Side>();
  for (auto _ : state) benchmark::DoNotOptimize(side.wire());
}
template <class Side>
void define(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(defined<Side>());
}
template <class Side>
void first(benchmark::State& state) {
  const Side side = defined<Side>();
  Read read;
  for (auto _ : state) {
    side.copy().get(13, read);
    benchmark::DoNotOptimize(read);
  }
}

template <class Side>
void verify(const Side& side) {
  for (std::size_t i = 0; i < kProperties.size(); ++i) {
    Read read;
    side.get(i, read);
    const bool isSame = kProperties[i].text != nullptr ? read.text == kProperties[i].text
                                                       : read.number == kProperties[i].number;
    if (isSame) continue;
    std::cerr << "a side differs in " << kProperties[i].name << "\n";
    std::exit(1);
  }
}
template <class... Sides>
void verifyAll() {
  (verify(defined<Sides>()), ...);
  (verify(defined<Sides>().copy()), ...);
}

}  // namespace

BENCHMARK(get<Ours>)->Name("get/ours");
BENCHMARK(get<FlatHash>)->Name("get/flat_hash_map");
BENCHMARK(get<Unordered>)->Name("get/unordered_map");
BENCHMARK(get<Protobuf>)->Name("get/protobuf");
BENCHMARK(get<Flex>)->Name("get/flexbuffers");
BENCHMARK(get<Json>)->Name("get/nlohmann");
BENCHMARK(param<Ours>)->Name("param/ours");
BENCHMARK(param<FlatHash>)->Name("param/flat_hash_map");
BENCHMARK(param<Unordered>)->Name("param/unordered_map");
BENCHMARK(param<Protobuf>)->Name("param/protobuf");
BENCHMARK(param<Flex>)->Name("param/flexbuffers");
BENCHMARK(param<Json>)->Name("param/nlohmann");
BENCHMARK(indexParam<Ours>)->Name("indexParam/ours");
BENCHMARK(indexParam<Protobuf>)->Name("indexParam/protobuf");
BENCHMARK(index<Ours>)->Name("index/ours");
BENCHMARK(index<Protobuf>)->Name("index/protobuf");
BENCHMARK(set<Ours>)->Name("set/ours");
BENCHMARK(set<FlatHash>)->Name("set/flat_hash_map");
BENCHMARK(set<Unordered>)->Name("set/unordered_map");
BENCHMARK(set<Protobuf>)->Name("set/protobuf");
BENCHMARK(set<Json>)->Name("set/nlohmann");
BENCHMARK(copy<Ours>)->Name("copy/ours");
BENCHMARK(copy<FlatHash>)->Name("copy/flat_hash_map");
BENCHMARK(copy<Unordered>)->Name("copy/unordered_map");
BENCHMARK(copy<Protobuf>)->Name("copy/protobufCopy");
BENCHMARK(wire<Protobuf>)->Name("copy/protobufWire");
BENCHMARK(copy<Flex>)->Name("copy/flexbuffers");
BENCHMARK(copy<Json>)->Name("copy/nlohmann");
BENCHMARK(wire<Json>)->Name("copy/nlohmannWire");
BENCHMARK(define<Ours>)->Name("define/ours");
BENCHMARK(define<FlatHash>)->Name("define/flat_hash_map");
BENCHMARK(define<Unordered>)->Name("define/unordered_map");
BENCHMARK(define<Protobuf>)->Name("define/protobuf");
BENCHMARK(define<Flex>)->Name("define/flexbuffers");
BENCHMARK(define<Json>)->Name("define/nlohmann");
BENCHMARK(first<Ours>)->Name("first/ours");
BENCHMARK(first<FlatHash>)->Name("first/flat_hash_map");
BENCHMARK(first<Flex>)->Name("first/flexbuffers");

int main(int argc, char** argv) {
  verifyAll<Ours, FlatHash, Unordered, Protobuf, Flex, Json>();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
