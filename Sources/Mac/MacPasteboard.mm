#include "Mac/MacPasteboard.h"

#include "Mac/DataBytes.h"
#include "Mac/FileUrls.h"
#include "Mac/RaisedExceptions.h"
#include "Mac/Strings.h"
#include "Platform/PasteboardTypes.h"
#include "Support/Text.h"

#include <algorithm>
#include <utility>

namespace tavel {

namespace {

constexpr std::string_view escapedPrefix = "bytes:";

/// The name itself, if the server distinguishes it from all others. Otherwise its bytes in hexadecimal
/// digits: a string must be UTF-8, and a zero character may end it.
NSString* _Nullable nameFrom(const std::string& name) {
    if (isUtf8(name) && name.find('\0') == std::string::npos && !name.starts_with(escapedPrefix))
        return stringFromUtf8(name);
    constexpr std::string_view digits = "0123456789abcdef";
    std::string escaped(escapedPrefix);
    for (const char byte : name) {
        const auto value = static_cast<unsigned char>(byte);
        escaped += digits[value / digits.size()];
        escaped += digits[value % digits.size()];
    }
    return stringFromUtf8(escaped);
}

/// Nil if the text cannot be a type.
NSString* _Nullable typeFrom(std::string_view type) {
    return pasteboardType::isReadableName(type) ? stringFromUtf8(type) : nil;
}

std::vector<std::string> typeNamesOf(NSArray<NSString*>* _Nullable objects) {
    std::vector<std::string> names;
    for (NSString* object in objects) {
        if (names.size() == pasteboardType::mostTypes)
            break;
        auto name = utf8Beginning(object, pasteboardType::longestNameBytes);
        if (name && pasteboardType::isReadableName(*name))
            names.push_back(std::move(*name));
    }
    return names;
}

NSArray<NSString*>* typesOf(std::span<const Representation> representations) {
    NSMutableArray<NSString*>* const types = [NSMutableArray arrayWithCapacity:representations.size()];
    for (const Representation& one : representations) {
        if (NSString* const type = typeFrom(one.type))
            [types addObject:type];
    }
    return types;
}

/// An item with all representations; nil if it refuses one.
NSPasteboardItem* _Nullable itemOf(std::span<const Representation> representations) {
    NSPasteboardItem* const item = [[[NSPasteboardItem alloc] init] autorelease];
    for (const Representation& one : representations) {
        NSString* const type = typeFrom(one.type);
        if (type == nil || ![item setData:dataSharing(one.data) forType:type])
            return nil;
    }
    return item;
}

bool setStringOf(NSPasteboard* pasteboard, std::string_view text, std::string_view type) {
    NSString* const string = stringFromUtf8(text);
    NSString* const named = typeFrom(type);
    return string != nil && named != nil && [pasteboard setString:string forType:named];
}

bool setDataOf(NSPasteboard* pasteboard, const Bytes& data, std::string_view type) {
    NSString* const named = typeFrom(type);
    return named != nil && [pasteboard setData:dataSharing(data) forType:named];
}

bool setValueOf(NSPasteboard* pasteboard, const PasteboardValue& value) {
    return value.form == PasteboardValue::Form::text ? setStringOf(pasteboard, value.bytes.view(), value.type)
                                                     : setDataOf(pasteboard, value.bytes, value.type);
}

/// Whether a type is there from which the system makes URLs.
bool offersUrls(NSPasteboard* pasteboard) {
    NSArray<NSString*>* const offered = [pasteboard types];
    for (NSString* type in [NSURL readableTypesForPasteboard:pasteboard]) {
        if ([offered containsObject:type])
            return true;
    }
    return false;
}

} // namespace

MacPasteboard::MacPasteboard(const std::optional<std::string>& name)
    : pasteboard_(unlessRaised(Retained<NSPasteboard>(),
                               [&] { return Retained<NSPasteboard>::retain(named(name)); })),
      isGeneral_(!name) {}

NSPasteboard* _Nullable MacPasteboard::named(const std::optional<std::string>& name) {
    if (!name)
        return [NSPasteboard generalPasteboard];
    NSString* const known = nameFrom(*name);
    return known == nil ? nil : [NSPasteboard pasteboardWithName:known];
}

std::int64_t MacPasteboard::changeCount() {
    lastCount_ = countFromServer().value_or(lastCount_);
    return lastCount_;
}

std::optional<std::int64_t> MacPasteboard::countFromServer() {
    owner_.assertCurrent();
    return unlessRaised(std::optional<std::int64_t>(),
                        [&] { return std::optional<std::int64_t>([pasteboard_.get() changeCount]); });
}

/// AppKit reads the count without a request to another process.
std::int64_t MacPasteboard::noticedChangeCount() {
    return changeCount();
}

std::vector<std::string> MacPasteboard::types() {
    owner_.assertCurrent();
    return unlessRaised(std::vector<std::string>(), [&] { return typeNamesOf([pasteboard_.get() types]); });
}

/// The default is to ask for the general pasteboard, and to allow for all others.
ReadAccess MacPasteboard::readAccess() {
    owner_.assertCurrent();
    if (@available(macOS 15.4, *)) {
        return unlessRaised(ReadAccess::asks, [&] {
            switch ([pasteboard_.get() accessBehavior]) {
            case NSPasteboardAccessBehaviorAsk:
                return ReadAccess::asks;
            case NSPasteboardAccessBehaviorAlwaysAllow:
                return ReadAccess::free;
            case NSPasteboardAccessBehaviorAlwaysDeny:
                return ReadAccess::denied;
            case NSPasteboardAccessBehaviorDefault:
                break;
            }
            return isGeneral_ ? ReadAccess::asks : ReadAccess::free;
        });
    }
    return ReadAccess::free;
}

std::optional<Bytes> MacPasteboard::string(std::string_view type, std::size_t limit) {
    owner_.assertCurrent();
    if (isDenied())
        return std::nullopt;
    return unlessRaised(std::optional<Bytes>(), [&]() -> std::optional<Bytes> {
        // stringForType: may join the texts of all items under other types, too.
        if (type != pasteboardType::string) {
            auto first = wholeData(type);
            return first && isUtf8(first->view()) ? std::optional(first->slice(0, limit + 1)) : std::nullopt;
        }
        NSString* const named = typeFrom(type);
        auto text =
            named == nil ? std::nullopt : utf8Beginning([pasteboard_.get() stringForType:named], limit);
        if (!text)
            return std::nullopt;
        return Bytes::adopt(std::move(*text)).slice(0, limit + 1);
    });
}

std::optional<Bytes> MacPasteboard::data(std::string_view type, std::size_t limit) {
    owner_.assertCurrent();
    if (isDenied())
        return std::nullopt;
    return unlessRaised(std::optional<Bytes>(), [&]() -> std::optional<Bytes> {
        const auto whole = wholeData(type);
        return whole ? std::optional(whole->slice(0, limit + 1)) : std::nullopt;
    });
}

/// The system hands a value over as a whole, whatever its size. Shares its buffer.
std::optional<Bytes> MacPasteboard::wholeData(std::string_view type) {
    NSString* const named = typeFrom(type);
    NSData* const found = named == nil ? nil : [pasteboard_.get() dataForType:named];
    if (found == nil)
        return std::nullopt;
    return bytesSharing(found);
}

FileList MacPasteboard::files(const FileListLimit& limit) {
    owner_.assertCurrent();
    if (isDenied())
        return {};
    return unlessRaised(FileList(), [&] {
        if (!offersUrls(pasteboard_.get()))
            return FileList();
        NSDictionary* const filesOnly =
            [NSDictionary dictionaryWithObject:[NSNumber numberWithBool:YES]
                                        forKey:NSPasteboardURLReadingFileURLsOnlyKey];
        FileListBuilder files(limit);
        for (NSURL* url in [pasteboard_.get() readObjectsForClasses:[NSArray arrayWithObject:[NSURL class]]
                                                            options:filesOnly]) {
            auto path = pathOfFileUrl(url);
            if (path && !files.addPath(std::move(*path)))
                break;
        }
        return files.take();
    });
}

bool MacPasteboard::canHold(const Representation& representation) {
    return unlessRaised(false, [&] { return itemOf({&representation, 1}) != nil; });
}

std::optional<std::int64_t> MacPasteboard::replaceWithValues(std::span<const PasteboardValue> values) {
    return replace([&](NSPasteboard* pasteboard) {
        return std::ranges::all_of(
            values, [&](const PasteboardValue& value) { return setValueOf(pasteboard, value); });
    });
}

std::optional<std::int64_t> MacPasteboard::replaceWithItems(std::span<const PasteboardItem> items) {
    return replace([&](NSPasteboard* pasteboard) {
        if (items.empty())
            return true;
        NSMutableArray<NSPasteboardItem*>* const objects = [NSMutableArray arrayWithCapacity:items.size()];
        for (const PasteboardItem& one : items) {
            NSPasteboardItem* const item = itemOf(one);
            if (item == nil)
                return false;
            [objects addObject:item];
        }
        return [pasteboard writeObjects:objects] != NO;
    });
}

/// Clears the pasteboard and lets `write` fill it. The system refuses what is written if another program has
/// cleared the pasteboard meanwhile; what is written keeps the change count of the clearing.
std::optional<std::int64_t> MacPasteboard::replace(const std::function<bool(NSPasteboard* _Nonnull)>& write) {
    owner_.assertCurrent();
    return unlessRaised(std::optional<std::int64_t>(), [&]() -> std::optional<std::int64_t> {
        NSPasteboard* const pasteboard = pasteboard_.get();
        if (pasteboard == nil)
            return std::nullopt;
        lastCount_ = [pasteboard clearContents];
        const std::int64_t count = lastCount_;
        return write(pasteboard) ? std::optional(count) : std::nullopt;
    });
}

/// The added types are texts that describe the content (its file's URL, the mark of a generated file).
std::optional<std::int64_t> MacPasteboard::addTypes(std::span<const Representation> representations) {
    owner_.assertCurrent();
    return unlessRaised(std::optional<std::int64_t>(), [&]() -> std::optional<std::int64_t> {
        NSArray<NSString*>* const types = typesOf(representations);
        if ([types count] == 0 || [types count] != representations.size() ||
            [[pasteboard_.get() types] count] == 0)
            return std::nullopt;
        const std::int64_t count = [pasteboard_.get() addTypes:types owner:nil];
        if (count == 0)
            return std::nullopt;
        lastCount_ = count;
        bool firstIsThere = false;
        for (const Representation& one : representations) {
            const bool isThere = setStringOf(pasteboard_.get(), one.data.view(), one.type);
            if (&one == representations.data())
                firstIsThere = isThere;
        }
        return firstIsThere ? std::optional(count) : std::nullopt;
    });
}

} // namespace tavel
