#pragma once

/*
 * The functions of the vendor camera library ICubeSDK that this program calls,
 * declared by us: the library is closed and ships no header we could use. The
 * program never links against it; ICubeDriver loads it with dlopen and binds
 * each name below with dlsym into a pointer of the matching type.
 *
 * Plain C throughout, so that the library's own C exports fit:
 * - every function returns an int status, 0 = success unless said otherwise;
 * - the camera index comes first wherever a function takes one;
 * - out values are written through pointers;
 * - texts are char buffers: the caller fills them with blanks and a closing
 *   NUL, the library overwrites the front (and may leave no NUL inside the
 *   stated length);
 * - file names are UTF-8, the system code page.
 */

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Length of the version text buffer (blanks, without the closing NUL). */
#define ICUBESDK_VERSION_LENGTH 9
/* Length of the camera name buffer (blanks, without the closing NUL). */
#define ICUBESDK_NAME_LENGTH 13
/* Capacity of the mode list the program hands to GetModeList. */
#define ICUBESDK_MODE_LIST_CAPACITY 10

/* Range record of one camera parameter, six signed 32-bit integers in this order. */
typedef struct ICubeSDK_ParamRange {
    int32_t enabled;  /* 0: the camera does not offer the parameter */
    int32_t autoMode; /* 1: the parameter has an automatic mode */
    int32_t third;    /* the library's own; unused by the program */
    int32_t defaultValue;
    int32_t minimum;
    int32_t maximum;
} ICubeSDK_ParamRange;

/* which = 1; fills the API version text into a buffer of ICUBESDK_VERSION_LENGTH
   characters. A result of 1 is failure. */
typedef int (*ICubeSDK_GetVersionFn)(int which, char* version);
/* Returns the number of cameras found (less than 1: none). */
typedef int (*ICubeSDK_InitFn)(void);
/* Fills the camera name into a buffer of ICUBESDK_NAME_LENGTH characters. */
typedef int (*ICubeSDK_GetNameFn)(int cam, char* name);
/* 0 and -24 both mean the camera is open. */
typedef int (*ICubeSDK_OpenFn)(int cam);
/* 0 while the camera is open. */
typedef int (*ICubeSDK_IsOpenFn)(int cam);
typedef int (*ICubeSDK_CloseFn)(int cam);

typedef int (*ICubeSDK_SetCamParameterFn)(int cam, int type, int value);
typedef int (*ICubeSDK_GetCamParameterFn)(int cam, int type, int* value);
typedef int (*ICubeSDK_GetCamParameterRangeFn)(int cam, int type, ICubeSDK_ParamRange* range);

/* modes: the first element of an array of *count elements; on return *count is
   the number of supported resolution indices written. */
typedef int (*ICubeSDK_GetModeListFn)(int cam, int* modes, int* count);
typedef int (*ICubeSDK_GetModeFn)(int cam, int* mode);
typedef int (*ICubeSDK_SetModeFn)(int cam, int mode);

/* Called with 1, 0, 0, 0, 0: the library draws the stream itself. */
typedef int (*ICubeSDK_SetDisplayModeFn)(int cam, int mode, int a, int b, int c, int d);
/* Streams into the native window (an X11 window id), called with -1 and 0. */
typedef int (*ICubeSDK_StartFn)(int cam, unsigned long window, int a, int b);
/* 1 while streaming. */
typedef int (*ICubeSDK_IsStartedFn)(int cam);
typedef int (*ICubeSDK_StopFn)(int cam);

/* Frame counters since the stream started, written through the pointer; the
   result is a status like every other call. */
typedef int (*ICubeSDK_GetGoodFramesFn)(int cam, int* count);
typedef int (*ICubeSDK_GetBrokenFramesFn)(int cam, int* count);

/* Writes the current frame to a bitmap file. */
typedef int (*ICubeSDK_SaveToFileFn)(int cam, const char* fileName);
/* Records an AVI file of the given length (a = 0); parameter 24 stays
   non-zero while the library is still writing it. */
typedef int (*ICubeSDK_SaveAviFn)(int cam, const char* fileName, int a, int seconds);

/* The true exposure time in milliseconds. */
typedef int (*ICubeSDK_GetExposureFn)(int cam, float* milliseconds);
/* flag: 1 = automatic mode on. */
typedef int (*ICubeSDK_GetParamAutoFn)(int cam, int type, int* flag);
typedef int (*ICubeSDK_SetParamAutoFn)(int cam, int type, int flag);
typedef int (*ICubeSDK_SetParamAutoDefFn)(int cam, int type);
typedef int (*ICubeSDK_SetParamOnePushFn)(int cam, int type);

#ifdef __cplusplus
}  // extern "C"

static_assert(sizeof(ICubeSDK_ParamRange) == 6 * sizeof(int32_t), "the range record has no padding");
static_assert(sizeof(int) == 4, "the library's integers are 32 bits");
#endif
