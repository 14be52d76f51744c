#include "standalone/lua/host_classes.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <limits>
#include <new>
#include <string>
#include <system_error>
#include <vector>

#include "standalone/files/file_error.h"
#include "standalone/gd/gd_picture.h"
#include "standalone/runtime/class_registry.h"
#include "standalone/runtime/exceptions.h"
#include "standalone/runtime/folder_item.h"
#include "standalone/runtime/memory_block.h"
#include "standalone/runtime/picture.h"
#include "standalone/runtime/strings.h"

namespace standalone {
namespace {

// What a member throws becomes an exception of the host language, and the member's result zero.
class Raised {
 public:
  Raised(const char *className, std::string message) : className_(className), message_(std::move(message)) {}

  void MarkPending() const {
    const Owned<Object> exception = Owned<Object>::Adopt(HostState::Current().Classes().NewInstance(className_));
    const Owned<String> text = Owned<String>::Adopt(String::Make(message_));
    exception->SetText("Message", text.Get());
    RaiseException(exception.Get());
  }

 private:
  const char *className_;
  std::string message_;
};

constexpr char kOutOfBounds[] = "OutOfBoundsException";
constexpr char kIO[] = "IOException";

template <auto kFunction>
struct Member;

template <class Result, class... Arguments, Result (*kFunction)(Arguments...)>
struct Member<kFunction> {
  static Result Run(Arguments... arguments) {
    try {
      return kFunction(arguments...);
    } catch (const Raised &raised) {
      raised.MarkPending();
    } catch (const ImageFileError &error) {
      Raised(kIO, error.what()).MarkPending();
    } catch (const std::filesystem::filesystem_error &error) {
      Raised(kIO, error.path1().string() + ": " + error.code().message()).MarkPending();
    } catch (const std::bad_alloc &) {
      Raised("OutOfMemoryException", "there is not enough memory").MarkPending();
    }
    return Result();
  }
  static void *Address() { return reinterpret_cast<void *>(&Run); }
};

template <auto kFunction>
RegisteredMethod Method(const char *declaration) {
  return {Member<kFunction>::Address(), nullptr, declaration, 0};
}

template <auto kGetter, auto kSetter>
RegisteredMethod Assignable(const char *declaration) {
  return {Member<kGetter>::Address(), Member<kSetter>::Address(), declaration, 0};
}

template <auto kGetter>
RegisteredProperty ReadOnly(const char *name, const char *type) {
  return {"", name, type, 0, Member<kGetter>::Address(), nullptr, 0};
}

template <auto kGetter, auto kSetter>
RegisteredProperty Property(const char *name, const char *type) {
  return {"", name, type, 0, Member<kGetter>::Address(), Member<kSetter>::Address(), 0};
}

template <class T>
T &The(REALobject handle) {
  T *const object = ObjectAs<T>(handle);
  if (object == nullptr) throw Raised("NilObjectException", "an object is nil");
  return *object;
}

// --- pictures ---

constexpr uint32_t RgbOf(Pixel pixel) {
  return uint32_t{pixel.red} << 16 | uint32_t{pixel.green} << 8 | uint32_t{pixel.blue};
}

constexpr Pixel PixelOf(uint32_t rgb) {
  return {static_cast<uint8_t>(rgb >> 16), static_cast<uint8_t>(rgb >> 8), static_cast<uint8_t>(rgb), 255};
}

// A new picture is white, as the host language has it.
REALobject NewPicture(int32_t width, int32_t height, int32_t depth) {
  if (width < 1 || height < 1) throw Raised(kOutOfBounds, "a picture has a width and a height of 1 or more");
  if (depth != 32) throw Raised("UnsupportedOperationException", "this host's pictures have a depth of 32");
  Owned<Picture> picture = Owned<Picture>::Adopt(Picture::Make(width, height));
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) picture->SetPixel(x, y, {255, 255, 255, 255});
  }
  return picture.Release()->Handle();
}

template <Orient kOrient>
REALobject OpenPath(REALstring path) {
  return LoadPicture(TextOf(path), kOrient).picture.Release()->Handle();
}

template <Orient kOrient>
REALobject OpenFile(REALobject file) {
  return LoadPicture(The<FolderItem>(file).Path(), kOrient).picture.Release()->Handle();
}

void SaveToPath(Picture &picture, const std::string &path, int32_t quality) {
  SavePicture(picture, path,
              {.alpha = picture.Mask() != nullptr ? AlphaPlane::Keep : AlphaPlane::Drop, .quality = quality});
}

void SavePath(REALobject picture, REALstring path, int32_t quality) {
  SaveToPath(The<Picture>(picture), TextOf(path), quality);
}

void SaveFile(REALobject picture, REALobject file, int32_t quality) {
  SaveToPath(The<Picture>(picture), The<FolderItem>(file).Path(), quality);
}

int32_t PictureWidth(REALobject picture, int32_t) { return The<Picture>(picture).Width(); }
int32_t PictureHeight(REALobject picture, int32_t) { return The<Picture>(picture).Height(); }
int32_t PictureDepth(REALobject, int32_t) { return 32; }

REALobject PictureMask(REALobject picture, int32_t) {
  return Owned<Picture>::Share(&The<Picture>(picture).GetMask()).Release()->Handle();
}

void SetPictureMask(REALobject picture, int32_t, REALobject mask) {
  The<Picture>(picture).SetMask(Owned<Picture>::Share(ObjectAs<Picture>(mask)));
}

uint8_t PictureHasMask(REALobject picture, int32_t) { return The<Picture>(picture).Mask() != nullptr ? 1 : 0; }

REALobject PictureGraphics(REALobject picture, int32_t) { return Graphics::Make(The<Picture>(picture))->Handle(); }

Picture &TargetAt(REALobject graphics, int32_t x, int32_t y) {
  Picture &picture = The<Graphics>(graphics).Target();
  if (x < 0 || y < 0 || x >= picture.Width() || y >= picture.Height()) {
    throw Raised(kOutOfBounds, "there is no pixel " + std::to_string(x) + ", " + std::to_string(y) +
                                   " in a picture of " + std::to_string(picture.Width()) + " x " +
                                   std::to_string(picture.Height()));
  }
  return picture;
}

uint32_t GraphicsPixel(REALobject graphics, int32_t x, int32_t y) {
  return RgbOf(TargetAt(graphics, x, y).GetPixel(x, y));
}

void SetGraphicsPixel(REALobject graphics, int32_t x, int32_t y, uint32_t rgb) {
  TargetAt(graphics, x, y).SetPixel(x, y, PixelOf(rgb));
}

// --- memory blocks ---

REALobject NewBlock(int32_t size) {
  if (size < 0) throw Raised(kOutOfBounds, "a memory block has a size of 0 or more");
  return MemoryBlock::Make(size)->Handle();
}

int32_t BlockSize(REALobject block, int32_t) { return The<MemoryBlock>(block).Size(); }

// The bytes from `offset` on. Of a block over foreign memory the size is not known, and only the caller can tell.
uint8_t *BytesAt(REALobject handle, int32_t offset, int64_t count) {
  const MemoryBlock &block = The<MemoryBlock>(handle);
  const bool isInside =
      offset >= 0 && count >= 0 && (block.Size() == MemoryBlock::kUnknownSize || offset + count <= block.Size());
  if (!isInside) {
    throw Raised(kOutOfBounds, "bytes " + std::to_string(offset) + " to " + std::to_string(offset + count - 1) +
                                   " are not in a memory block of " + std::to_string(block.Size()));
  }
  return block.Data() + offset;
}

template <class Stored, class Seen>
Seen NumberAt(REALobject block, int32_t offset) {
  Stored number = 0;
  std::memcpy(&number, BytesAt(block, offset, sizeof number), sizeof number);
  return static_cast<Seen>(number);
}

template <class Stored, class Seen>
void SetNumberAt(REALobject block, int32_t offset, Seen value) {
  const auto number = static_cast<Stored>(value);
  std::memcpy(BytesAt(block, offset, sizeof number), &number, sizeof number);
}

template <class Stored, class Seen>
RegisteredMethod Number(const char *declaration) {
  return Assignable<NumberAt<Stored, Seen>, SetNumberAt<Stored, Seen>>(declaration);
}

REALstring StringAt(REALobject block, int32_t offset, int32_t size) {
  const auto *const bytes = reinterpret_cast<const char *>(BytesAt(block, offset, size));
  return String::Make({bytes, static_cast<size_t>(size)}, Encoding::Binary)->Handle();
}

// Writes as many bytes as the value has, at most `size` of them; the rest of the place stays.
void SetStringAt(REALobject block, int32_t offset, int32_t size, REALstring value) {
  uint8_t *const place = BytesAt(block, offset, size);
  const std::string_view bytes = BytesOf(value);
  if (!bytes.empty()) std::memcpy(place, bytes.data(), std::min(bytes.size(), static_cast<size_t>(size)));
}

// --- folder items ---

namespace fs = std::filesystem;

const std::string &PathOf(REALobject file) { return The<FolderItem>(file).Path(); }

// The system's functions take paths that end at a zero byte: one in a path would lead to another file.
REALobject ItemAtPath(std::string path) {
  if (path.find('\0') != std::string::npos) throw Raised(kIO, "a folder item's path cannot hold a zero byte");
  return FolderItem::Make(std::move(path))->Handle();
}

REALobject NewItem(REALstring path) {
  if (BytesOf(path).empty()) throw Raised(kIO, "a folder item needs a path");
  return ItemAtPath(TextOf(path));
}

REALstring ItemName(REALobject file, int32_t) {
  return String::Make(fs::path(PathOf(file)).filename().string())->Handle();
}

REALstring ItemPath(REALobject file, int32_t) { return String::Make(PathOf(file))->Handle(); }

uint8_t ItemExists(REALobject file, int32_t) { return fs::exists(PathOf(file)) ? 1 : 0; }

uint8_t ItemIsFolder(REALobject file, int32_t) { return fs::is_directory(PathOf(file)) ? 1 : 0; }

int64_t ItemLength(REALobject file, int32_t) { return static_cast<int64_t>(fs::file_size(PathOf(file))); }

REALobject ItemParent(REALobject file, int32_t) {
  return FolderItem::Make(fs::absolute(PathOf(file)).parent_path().string())->Handle();
}

REALobject ItemChild(REALobject folder, REALstring name) {
  return ItemAtPath((fs::path(PathOf(folder)) / TextOf(name)).string());
}

// What is in the folder, by name.
std::vector<std::string> PathsIn(REALobject folder) {
  std::vector<std::string> paths;
  for (const fs::directory_entry &entry : fs::directory_iterator(PathOf(folder)))
    paths.push_back(entry.path().string());
  std::sort(paths.begin(), paths.end());
  return paths;
}

int32_t ItemCount(REALobject folder, int32_t) { return static_cast<int32_t>(PathsIn(folder).size()); }

// Items are counted from 1, as the host language has it.
REALobject ItemAt(REALobject folder, int32_t index) {
  const std::vector<std::string> paths = PathsIn(folder);
  if (index < 1 || index > static_cast<int64_t>(paths.size())) {
    throw Raised(kOutOfBounds,
                 "there is no item " + std::to_string(index) + " in a folder of " + std::to_string(paths.size()));
  }
  return FolderItem::Make(paths[static_cast<size_t>(index) - 1])->Handle();
}

void DeleteItem(REALobject file) {
  if (!fs::remove(PathOf(file))) throw Raised(kIO, PathOf(file) + " is not there");
}

void CreateFolder(REALobject file) { fs::create_directories(PathOf(file)); }

RegisteredClass Members(const char *name) {
  RegisteredClass members;
  members.name = name;
  return members;
}

// clang-format off

template <Orient kOrient>
RegisteredClass PictureMembers() {
  RegisteredClass members = Members("Picture");
  members.properties = {
      ReadOnly<PictureWidth>("Width", "Integer"),
      ReadOnly<PictureHeight>("Height", "Integer"),
      ReadOnly<PictureDepth>("Depth", "Integer"),
      Property<PictureMask, SetPictureMask>("Mask", "Picture"),
      ReadOnly<PictureHasMask>("HasMask", "Boolean"),
      ReadOnly<PictureGraphics>("Graphics", "Graphics"),
  };
  members.methods = {
      Method<SaveFile>("Save(file as FolderItem, quality as Integer = -1)"),
      Method<SavePath>("Save(path as String, quality as Integer = -1)"),
  };
  members.sharedMethods = {
      Method<NewPicture>("Constructor(width as Integer, height as Integer, depth as Integer = 32) as Picture"),
      Method<OpenFile<kOrient>>("Open(file as FolderItem) as Picture"),
      Method<OpenPath<kOrient>>("Open(path as String) as Picture"),
  };
  return members;
}

RegisteredClass GraphicsMembers() {
  RegisteredClass members = Members("Graphics");
  members.methods = {
      Assignable<GraphicsPixel, SetGraphicsPixel>("Pixel(x as Integer, y as Integer) as Color"),
  };
  return members;
}

RegisteredClass MemoryBlockMembers() {
  RegisteredClass members = Members("MemoryBlock");
  members.properties = {
      ReadOnly<BlockSize>("Size", "Integer"),
  };
  members.methods = {
      Number<uint8_t, int32_t>("Byte(offset as Integer) as Integer"),
      Number<int8_t, int32_t>("Int8Value(offset as Integer) as Integer"),
      Number<uint8_t, int32_t>("UInt8Value(offset as Integer) as Integer"),
      Number<int16_t, int32_t>("Int16Value(offset as Integer) as Integer"),
      Number<uint16_t, int32_t>("UInt16Value(offset as Integer) as Integer"),
      Number<int32_t, int32_t>("Int32Value(offset as Integer) as Integer"),
      Number<uint32_t, int64_t>("UInt32Value(offset as Integer) as Int64"),
      Number<int64_t, int64_t>("Int64Value(offset as Integer) as Int64"),
      Number<float, double>("SingleValue(offset as Integer) as Double"),
      Number<double, double>("DoubleValue(offset as Integer) as Double"),
      Assignable<StringAt, SetStringAt>("StringValue(offset as Integer, size as Integer) as String"),
  };
  members.sharedMethods = {
      Method<NewBlock>("Constructor(size as Integer) as MemoryBlock"),
  };
  return members;
}

RegisteredClass FolderItemMembers() {
  RegisteredClass members = Members("FolderItem");
  members.properties = {
      ReadOnly<ItemName>("Name", "String"),
      ReadOnly<ItemPath>("NativePath", "String"),
      ReadOnly<ItemExists>("Exists", "Boolean"),
      ReadOnly<ItemIsFolder>("Directory", "Boolean"),
      ReadOnly<ItemLength>("Length", "Int64"),
      ReadOnly<ItemCount>("Count", "Integer"),
      ReadOnly<ItemParent>("Parent", "FolderItem"),
  };
  members.methods = {
      Method<ItemChild>("Child(name as String) as FolderItem"),
      Method<ItemAt>("Item(index as Integer) as FolderItem"),
      Method<CreateFolder>("CreateAsFolder"),
      Method<DeleteItem>("Delete"),
  };
  members.sharedMethods = {
      Method<NewItem>("Constructor(path as String) as FolderItem"),
  };
  return members;
}

// clang-format on

}  // namespace

void DescribeHostClasses(HostState &host, Orient orient) {
  ClassRegistry &classes = host.Classes();
  classes.Define(kIO, &classes.Get("RuntimeException"), [](const Class &type) { return new ExceptionObject(type); });
  RegisteredClass pictures =
      orient == Orient::Upright ? PictureMembers<Orient::Upright>() : PictureMembers<Orient::AsStored>();
  for (RegisteredClass &members :
       std::vector{std::move(pictures), GraphicsMembers(), MemoryBlockMembers(), FolderItemMembers()}) {
    const std::string name = members.name;
    classes.Describe(name, std::move(members));
  }
}

}  // namespace standalone
