// The records that cross the border to the host, in the host's published layout, and nothing else.
// Written once for both word sizes: natural C alignment, addresses and table counts as wide as the machine's words.
#pragma once

#include <cstddef>
#include <cstdint>

// Opaque addresses of the host's own things; nil is allowed everywhere.
using REALobject = struct REALobjectStruct *;
using REALstring = struct REALstringStruct *;
using REALarray = struct REALarrayStruct *;

// The host's single function for turning an entry name into a function address (nil: no such entry).
using REALresolver = void *(*)(const char *name);

struct REALattribute {
  const char *name;
  const char *value;
};

struct REALmethodDefinition {
  void *function;
  void *setterFunction;
  const char *declaration;
  uint32_t flags;
  size_t attributeCount;
  REALattribute *attributes;
};

struct REALproperty {
  const char *group;
  const char *name;
  const char *type;
  uint32_t flags;
  void *getter;
  void *setter;
  int32_t param;
  const char *editor;
  size_t enumCount;
  void *enumEntries;
  size_t attributeCount;
  REALattribute *attributes;
};

struct REALevent {
  const char *declaration;
  uintptr_t forSystemUse;  // the event's handle, written by the host
  size_t attributeCount;
  REALattribute *attributes;
};

struct REALeventInstance {
  const char *name;
  void *implementation;
};

struct REALconstant {
  const char *declaration;
  uintptr_t reserved;  // the constant's number, until the table is rewritten for the host
  uint32_t flags;
  size_t attributeCount;
  REALattribute *attributes;
};

struct REALclassDefinition {
  uint32_t version;
  const char *name;
  const char *superName;
  size_t dataSize;
  uintptr_t forSystemUse;  // offset of the class's data inside an instance, written by the host
  void *constructor;
  void *destructor;
  REALproperty *properties;
  size_t propertyCount;
  REALmethodDefinition *methods;
  size_t methodCount;
  REALevent *events;
  size_t eventCount;
  REALeventInstance *eventInstances;
  size_t eventInstanceCount;
  const char *interfaces;
  REALattribute *attributes;
  size_t attributeCount;
  REALconstant *constants;
  size_t constantCount;
  uint32_t flags;
  REALproperty *sharedProperties;
  size_t sharedPropertyCount;
  REALmethodDefinition *sharedMethods;
  size_t sharedMethodCount;
  void *delegates;
  size_t delegateCount;
  void *enums;
  size_t enumCount;
};

// Records of table version 9: the same without the attributes.
struct REALmethodDefinition9 {
  void *function;
  void *setterFunction;
  const char *declaration;
  uint32_t flags;
};

struct REALproperty9 {
  const char *group;
  const char *name;
  const char *type;
  uint32_t flags;
  void *getter;
  void *setter;
  int32_t param;
  const char *editor;
  size_t enumCount;
  void *enumEntries;
};

struct REALevent9 {
  const char *declaration;
  uintptr_t forSystemUse;
};

struct REALconstant9 {
  const char *declaration;
  uintptr_t reserved;
  uint32_t flags;
};

// Getter or setter of a property whose field the host reads or writes itself, at record + param.
inline void *const REALstandardAccessor = reinterpret_cast<void *>(~uintptr_t{0});

struct REALstringData {
  void *data;
  uint32_t length;  // bytes
  uint32_t encoding;
  void *reserved[2];  // the host's own
};

struct REALpictureDescription {
  uint32_t type;  // one of the two below
  void *data;     // the bitmap context or the GD image
  int32_t width;
  int32_t height;
  int32_t depth;
  uint8_t transparent;
  void *pixelBuffer;
};

inline constexpr int32_t kDescriptionBitmapContext = 8;
inline constexpr int32_t kDescriptionGDImage = 10;

// A true-colour image of the GD library, in that library's own natural layout.
struct GDImage {
  uint8_t **paletteRows;  // nil in a true-colour image
  int32_t width;
  int32_t height;
  int32_t colourCount;
  int32_t red[256];
  int32_t green[256];
  int32_t blue[256];
  int32_t open[256];
  int32_t transparent;
  int32_t *polyInts;
  int32_t polyAllocated;
  GDImage *brush;
  GDImage *tile;
  int32_t brushColorMap[256];
  int32_t tileColorMap[256];
  int32_t styleLength;
  int32_t stylePos;
  int32_t *style;
  int32_t interlace;
  int32_t thick;
  int32_t alpha[256];
  int32_t trueColor;
  uint8_t **trueColorRows;
};

// A file reference, an FSSpec and a length-prefixed UTF-16 name, as the host hands them over here.
struct FSRef {
  const char *path;
};

struct FSSpec {
  const char *path;
};

struct HFSUniStr255 {
  uint16_t length;
  uint16_t unicode[255];
};

// A rectangle of the QuickDraw platform, in pixels.
struct Rect {
  int16_t top;
  int16_t left;
  int16_t bottom;
  int16_t right;
};

// The handler of the event "NewPictureZVK" that a host program gives to its subclass of the factory.
using REALeventNewPicture = REALobject (*)(REALobject factory, int32_t width, int32_t height, int32_t format);

#if UINTPTR_MAX == UINT32_MAX
static_assert(sizeof(REALmethodDefinition) == 24 && sizeof(REALmethodDefinition9) == 16);
static_assert(sizeof(REALproperty) == 48 && sizeof(REALproperty9) == 40);
static_assert(sizeof(REALevent) == 16 && sizeof(REALevent9) == 8);
static_assert(sizeof(REALconstant) == 20 && sizeof(REALconstant9) == 12);
static_assert(sizeof(REALattribute) == 8 && sizeof(REALeventInstance) == 8);
static_assert(sizeof(REALclassDefinition) == 29 * 4);
static_assert(offsetof(REALclassDefinition, forSystemUse) == 16);
static_assert(offsetof(REALclassDefinition, properties) == 28);
static_assert(offsetof(REALclassDefinition, interfaces) == 60);
static_assert(offsetof(REALclassDefinition, constants) == 72);
static_assert(offsetof(REALclassDefinition, flags) == 80);
static_assert(offsetof(REALclassDefinition, sharedMethodCount) == 96);
static_assert(offsetof(REALproperty, getter) == 16 && offsetof(REALproperty, param) == 24);
static_assert(offsetof(REALmethodDefinition, flags) == 12);
static_assert(sizeof(REALstringData) == 20);
static_assert(sizeof(REALpictureDescription) == 28 && offsetof(REALpictureDescription, pixelBuffer) == 24);
static_assert(offsetof(GDImage, width) == 4 && offsetof(GDImage, height) == 8);
static_assert(offsetof(GDImage, trueColor) == 1806 * 4 && offsetof(GDImage, trueColorRows) == 1807 * 4);
#endif
