#pragma once

// The declarations of Foundation that this project uses, for builds without Apple's SDK.

#include <CoreFoundation/CoreFoundation.h>
#include <objc/NSObject.h>
#include <objc/objc.h>

@class NSArray, NSDictionary, NSString;

typedef NSUInteger NSStringEncoding;
enum : NSStringEncoding { NSUTF8StringEncoding = 4 };

@interface NSAutoreleasePool : NSObject
- (void)drain;
@end

@interface NSString : NSObject
+ (instancetype)stringWithUTF8String:(const char*)text;
- (instancetype)initWithBytes:(const void*)bytes
                       length:(NSUInteger)length
                     encoding:(NSStringEncoding)encoding;
- (const char*)UTF8String;
- (NSString*)precomposedStringWithCanonicalMapping;
@end

@interface NSArray : NSObject
- (NSUInteger)count;
- (id)objectAtIndex:(NSUInteger)index;
@end

@interface NSMutableArray : NSArray
+ (instancetype)array;
- (void)addObject:(id)object;
@end

@interface NSDictionary : NSObject
+ (instancetype)dictionaryWithObjectsAndKeys:(id)firstObject, ...;
- (id)objectForKey:(id)key;
@end

@interface NSMutableDictionary : NSDictionary
+ (instancetype)dictionary;
- (void)setObject:(id)object forKey:(id)key;
@end

@interface NSUserDefaults : NSObject
+ (NSUserDefaults*)standardUserDefaults;
- (NSDictionary*)volatileDomainForName:(NSString*)name;
- (void)setVolatileDomain:(NSDictionary*)domain forName:(NSString*)name;
- (void)removeVolatileDomainForName:(NSString*)name;
- (BOOL)synchronize;
@end

extern "C" NSString* const NSArgumentDomain;
