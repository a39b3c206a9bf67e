#include "tools/tolmarpack/Cabinet.h"

#include <libgcab.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "host/common/Text.h"
#include "tools/tolmarpack/Files.h"

namespace fs = std::filesystem;

namespace tolmarpack {

namespace {

struct Releaser {
  void operator()(void* object) const { g_object_unref(object); }
  void operator()(GError* error) const { g_error_free(error); }
  void operator()(GDateTime* time) const { g_date_time_unref(time); }
};
template <class Type>
using Owned = std::unique_ptr<Type, Releaser>;
using Error = Owned<GError>;

/// Calls an operation that tells its failure by its last argument.
template <class Operation, class... Arguments>
auto Do(const std::string& what, Operation operation, Arguments... arguments) {
  GError* fault = nullptr;
  auto result = operation(arguments..., &fault);
  if (result) return result;
  const Error error(fault);
  throw std::runtime_error(what + ": " + (error ? error->message : "unknown error"));
}

Owned<GFile> FileAt(const fs::path& path) {
  return Owned<GFile>(g_file_new_for_path(path.c_str()));
}

Owned<GCabFile> Member(const SourceFile& source) {
  std::string name = source.name;
  std::replace(name.begin(), name.end(), '/', '\\');
  const bool isAscii = std::all_of(name.begin(), name.end(), [](char c) { return c >= 0; });
  Owned<GCabFile> member(gcab_file_new_with_file(name.c_str(), FileAt(source.path).get()));
  // The first time that a cabinet can hold: the file's own would make each cabinet another one.
  const Owned<GDateTime> first(g_date_time_new_utc(1980, 1, 1, 0, 0, 0));
  gcab_file_set_date_time(member.get(), first.get());
  gcab_file_set_attributes(member.get(), isAscii ? 0 : GCAB_FILE_ATTRIBUTE_NAME_IS_UTF);
  return member;
}

Owned<GCabCabinet> Load(const fs::path& path) {
  const std::string what = "the package cannot be read";
  const Owned<GFile> file = FileAt(path);
  const Owned<GFileInputStream> stream(Do(what, g_file_read, file.get(), nullptr));
  Owned<GCabCabinet> cabinet(gcab_cabinet_new());
  Do(what, gcab_cabinet_load, cabinet.get(), G_INPUT_STREAM(stream.get()), nullptr);
  return cabinet;
}

}  // namespace

void WriteCabinet(const std::vector<SourceFile>& files, const fs::path& path) {
  const std::string what = "cannot pack " + TextOf(path);
  const Owned<GCabCabinet> cabinet(gcab_cabinet_new());
  const Owned<GCabFolder> folder(gcab_folder_new(GCAB_COMPRESSION_MSZIP));
  for (const SourceFile& source : files) {
    Do(what, gcab_folder_add_file, folder.get(), Member(source).get(), FALSE, nullptr);
  }
  Do(what, gcab_cabinet_add_folder, cabinet.get(), folder.get());
  Replace(path, [&](const fs::path& part) {
    const Owned<GFile> file = FileAt(part);
    const Owned<GFileOutputStream> stream(
        Do(what, g_file_replace, file.get(), nullptr, FALSE, G_FILE_CREATE_NONE, nullptr));
    Do(what, gcab_cabinet_write_simple, cabinet.get(), G_OUTPUT_STREAM(stream.get()), nullptr,
       nullptr, nullptr);
    Do(what, g_output_stream_close, G_OUTPUT_STREAM(stream.get()), nullptr);
  });
}

std::vector<refhost::CabinetMember> ListCabinet(const fs::path& path) {
  const Owned<GCabCabinet> cabinet = Load(path);
  std::vector<refhost::CabinetMember> members;
  const GPtrArray* folders = gcab_cabinet_get_folders(cabinet.get());
  for (guint i = 0; i < folders->len; ++i) {
    GSList* files = gcab_folder_get_files(GCAB_FOLDER(folders->pdata[i]));
    for (const GSList* at = files; at != nullptr; at = at->next) {
      GCabFile* file = GCAB_FILE(at->data);
      members.push_back(
          {ZLT::String::UTF8ToUTF16(gcab_file_get_name(file)), gcab_file_get_size(file)});
    }
    g_slist_free(files);
  }
  return members;
}

void UnpackCabinet(const fs::path& path, const fs::path& folder) {
  const Owned<GCabCabinet> cabinet = Load(path);
  const Owned<GFile> target = FileAt(folder);
  Do("the package is corrupt", gcab_cabinet_extract_simple, cabinet.get(), target.get(), nullptr,
     nullptr, nullptr);
}

}  // namespace tolmarpack
