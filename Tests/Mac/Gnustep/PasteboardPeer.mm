// Another program, which uses pasteboards in GNUstep's own way:
//
//   copy NAME (TYPE TEXT)...   copies a text in several types
//   fill NAME TYPE SIZE        copies so many bytes
//   print NAME TYPE            prints the data of that type, if there are any
//   sum NAME TYPE              prints the number of bytes and their sum
//   promise NAME TYPE TEXT     promises a text and delivers it on request; runs until it is killed

#import <AppKit/NSPasteboard.h>
#import <Foundation/Foundation.h>

#include <cstdio>
#include <numeric>
#include <string>
#include <vector>

@interface TavelPromise : NSObject {
    NSData* _promised; // owned
}
@end

@implementation TavelPromise

- (instancetype)initWithData:(NSData*)data {
    self = [super init];
    if (self != nil)
        _promised = [data retain];
    return self;
}

- (void)dealloc {
    [_promised release];
    [super dealloc];
}

- (void)pasteboard:(NSPasteboard*)pasteboard provideDataForType:(NSString*)type {
    [pasteboard setData:_promised forType:type];
}

@end

namespace {

NSData* dataOf(const std::string& text) {
    return [NSData dataWithBytes:text.data() length:text.size()];
}

NSString* stringOf(const std::string& text) {
    return [NSString stringWithUTF8String:text.c_str()];
}

void copy(NSPasteboard* pasteboard, const std::vector<std::string>& typesAndTexts) {
    NSMutableArray* const types = [NSMutableArray array];
    for (std::size_t i = 0; i < typesAndTexts.size(); i += 2)
        [types addObject:stringOf(typesAndTexts[i])];
    [pasteboard declareTypes:types owner:nil];
    for (std::size_t i = 0; i < typesAndTexts.size(); i += 2)
        [pasteboard setData:dataOf(typesAndTexts[i + 1]) forType:stringOf(typesAndTexts[i])];
}

void fill(NSPasteboard* pasteboard, const std::string& type, std::size_t size) {
    std::string bytes(size, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    copy(pasteboard, {type, bytes});
}

void print(NSData* data) {
    std::fwrite([data bytes], 1, [data length], stdout);
    std::puts("");
}

void printSum(NSData* data) {
    const auto* const bytes = static_cast<const unsigned char*>([data bytes]);
    std::printf("%lu %lu\n", static_cast<unsigned long>([data length]),
                std::accumulate(bytes, bytes + [data length], 0UL));
}

void promise(NSPasteboard* pasteboard, const std::string& type, const std::string& text) {
    TavelPromise* const owner = [[[TavelPromise alloc] initWithData:dataOf(text)] autorelease];
    [pasteboard declareTypes:[NSArray arrayWithObject:stringOf(type)] owner:owner];
    std::puts("promised");
    std::fflush(stdout);
    [[NSRunLoop currentRunLoop] run];
}

} // namespace

int main(int count, char** strings) {
    @autoreleasepool {
        const std::vector<std::string> arguments(strings + 1, strings + count);
        const std::string& command = arguments.at(0);
        NSPasteboard* const pasteboard = [NSPasteboard pasteboardWithName:stringOf(arguments.at(1))];
        if (command == "copy")
            copy(pasteboard, {arguments.begin() + 2, arguments.end()});
        else if (command == "fill")
            fill(pasteboard, arguments.at(2), std::stoul(arguments.at(3)));
        else if (command == "print")
            print([pasteboard dataForType:stringOf(arguments.at(2))]);
        else if (command == "sum")
            printSum([pasteboard dataForType:stringOf(arguments.at(2))]);
        else
            promise(pasteboard, arguments.at(2), arguments.at(3));
    }
}
