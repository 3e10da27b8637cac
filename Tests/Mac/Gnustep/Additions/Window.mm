#import <AppKit/AppKit.h>
#import <objc/runtime.h>

namespace {

/// By the window's address.
NSMapTable* behaviors() {
    static NSMapTable* const table =
        NSCreateMapTable(NSNonRetainedObjectMapKeyCallBacks, NSIntegerMapValueCallBacks, 8);
    return table;
}

void setCollectionBehavior(NSWindow* self, SEL, NSWindowCollectionBehavior behavior) {
    NSMapInsert(behaviors(), self, reinterpret_cast<void*>(static_cast<uintptr_t>(behavior)));
}

NSWindowCollectionBehavior collectionBehavior(NSWindow* self, SEL) {
    return static_cast<NSWindowCollectionBehavior>(reinterpret_cast<uintptr_t>(NSMapGet(behaviors(), self)));
}

template <typename Implementation>
void replace(SEL selector, Implementation replacement) {
    method_setImplementation(class_getInstanceMethod(objc_getClass("NSWindow"), selector),
                             reinterpret_cast<IMP>(replacement));
}

} // namespace

/// GNUstep's windows forget their collection behaviour.
@interface TavelCollectionBehavior : NSObject
@end

@implementation TavelCollectionBehavior

+ (void)load {
    replace(@selector(setCollectionBehavior:), setCollectionBehavior);
    replace(@selector(collectionBehavior), collectionBehavior);
}

@end
