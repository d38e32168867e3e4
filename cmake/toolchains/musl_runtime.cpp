// What Debian's static C++ runtime takes from glibc, and musl does not have.

#include <dlfcn.h>
#include <link.h>

#include <cstdint>
#include <ctime>

extern "C" {

/// Perhaps there are more threads.
char __libc_single_threaded = 0;

/// Where the unwinder finds the table of the object that holds an instruction.
int _dl_find_object(void* instruction, dl_find_object* found) {
    found->dlfo_eh_frame = nullptr;
    const auto visit = [](dl_phdr_info* object, std::size_t /*size*/, void* data) -> int {
        auto* const wanted = static_cast<dl_find_object*>(data);
        const auto address = reinterpret_cast<std::uintptr_t>(wanted->dlfo_map_start);
        bool inside = false;
        void* table = nullptr;
        for (int i = 0; i < object->dlpi_phnum; ++i) {
            const ElfW(Phdr)& segment = object->dlpi_phdr[i];
            const std::uintptr_t start = object->dlpi_addr + segment.p_vaddr;
            inside = inside || (segment.p_type == PT_LOAD && address - start < segment.p_memsz);
            table = segment.p_type == PT_GNU_EH_FRAME ? reinterpret_cast<void*>(start) : table;
        }
        wanted->dlfo_eh_frame = inside ? table : nullptr;
        return inside ? 1 : 0;
    };
    found->dlfo_map_start = instruction;
    dl_iterate_phdr(visit, found);
    return found->dlfo_eh_frame == nullptr ? -1 : 0;
}

std::size_t __strftime_l(char* text, std::size_t size, const char* format, const std::tm* time,
                         locale_t locale) {
    return strftime_l(text, size, format, time, locale);
}

}  // extern "C"
