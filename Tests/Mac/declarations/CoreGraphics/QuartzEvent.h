#pragma once

#include "CoreFoundation/CoreFoundation.h"

typedef struct CF_BRIDGED_TYPE(id) __CGEvent* CGEventRef;
typedef struct CF_BRIDGED_TYPE(id) __CGEventSource* CGEventSourceRef;
typedef struct __CGEventTapProxy* CGEventTapProxy;
typedef uint64_t CGEventMask;
typedef uint16_t CGKeyCode;

enum CGEventTapLocation : uint32_t {
    kCGHIDEventTap = 0,
    kCGSessionEventTap = 1,
};

enum CGEventTapPlacement : uint32_t {
    kCGHeadInsertEventTap = 0,
    kCGTailAppendEventTap = 1,
};

enum CGEventTapOptions : uint32_t {
    kCGEventTapOptionDefault = 0,
};

enum CGEventType : uint32_t {
    kCGEventKeyDown = 10,
    kCGEventKeyUp = 11,
    kCGEventTapDisabledByTimeout = 0xFFFFFFFE,
    kCGEventTapDisabledByUserInput = 0xFFFFFFFF,
};

enum CGEventField : uint32_t {
    kCGKeyboardEventAutorepeat = 8,
    kCGKeyboardEventKeycode = 9,
    kCGEventSourceUserData = 42,
};

typedef uint64_t CGEventFlags;

enum CGEventSourceStateID : int32_t {
    kCGEventSourceStateCombinedSessionState = 0,
};

#define CGEventMaskBit(eventType) (static_cast<CGEventMask>(1) << (eventType))

CF_ASSUME_NONNULL_BEGIN
CF_IMPLICIT_BRIDGING_ENABLED

typedef CGEventRef _Nullable (*CGEventTapCallBack)(CGEventTapProxy proxy, CGEventType type, CGEventRef event,
                                                   void* _Nullable userInfo);

CF_EXPORT CFMachPortRef _Nullable CGEventTapCreate(CGEventTapLocation tap, CGEventTapPlacement place,
                                                   CGEventTapOptions options, CGEventMask eventsOfInterest,
                                                   CGEventTapCallBack callBack,
                                                   void* _Nullable userInfo) CF_WARN_UNUSED_RESULT;
CF_EXPORT void CGEventTapEnable(CFMachPortRef tap, bool enable);
CF_EXPORT int64_t CGEventGetIntegerValueField(CGEventRef _Nullable event, CGEventField field);
CF_EXPORT void CGEventSetIntegerValueField(CGEventRef _Nullable event, CGEventField field, int64_t value);
CF_EXPORT CGEventFlags CGEventGetFlags(CGEventRef _Nullable event);
CF_EXPORT void CGEventSetFlags(CGEventRef _Nullable event, CGEventFlags flags);
CF_EXPORT CGEventRef _Nullable CGEventCreateKeyboardEvent(CGEventSourceRef _Nullable source, CGKeyCode key,
                                                          bool down) CF_WARN_UNUSED_RESULT;
CF_EXPORT void CGEventPost(CGEventTapLocation tap, CGEventRef _Nullable event);
CF_EXPORT bool CGEventSourceKeyState(CGEventSourceStateID state, CGKeyCode key);

CF_IMPLICIT_BRIDGING_DISABLED
CF_ASSUME_NONNULL_END
