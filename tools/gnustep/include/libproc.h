// The part of <libproc.h> of macOS that the program uses. session_stand_ins.mm implements it.
#pragma once

#include <stdint.h>

#define PROC_RUID_ONLY 5
#define PROC_PIDPATHINFO_MAXSIZE 4096

#ifdef __cplusplus
extern "C" {
#endif

int proc_listpids(uint32_t type, uint32_t info, void* buffer, int size);
int proc_pidpath(int process, void* buffer, uint32_t size);

#ifdef __cplusplus
}
#endif
