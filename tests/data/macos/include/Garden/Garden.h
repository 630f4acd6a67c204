// Declarations of a framework that is nowhere but in the listing beside it, for the tests of the checker: something of
// each sort.
#pragma once

#import <Foundation/Foundation.h>

#ifdef __cplusplus
extern "C" {
#endif

extern NSString* const GardenDidChangeNotification;
static const NSInteger GardenLargest = 12;

typedef enum GardenSeason : NSInteger { GardenSeasonSpring = 1, GardenSeasonAutumn = 3 } GardenSeason;

typedef NSUInteger GardenTools;
enum : NSUInteger { GardenToolRake = 1UL << 2, GardenToolSpade = 1UL << 3 };

typedef struct GardenBed {
  double width;
  NSInteger rows;
} GardenBed;

NSInteger GardenCount(NSString* name, GardenBed bed);

@protocol GardenDelegate <NSObject>
- (void)gardenDidChange:(id)garden;
@optional
- (BOOL)garden:(id)garden shouldWater:(GardenBed)bed;
@end

@interface GardenPlace : NSObject
@property(readonly) NSInteger number;
@end

@interface Garden : GardenPlace
@property(copy) NSString* name;
@property(readonly) GardenSeason season;
@property(getter=isOpen) BOOL open;
@property(weak) id<GardenDelegate> delegate;
@property(class, readonly) Garden* sharedGarden;
- (instancetype)initWithName:(NSString*)name beds:(NSInteger)beds;
- (BOOL)plant:(NSString*)flower using:(GardenTools)tools;
- (void)waterBed:(GardenBed)bed completion:(void (^)(BOOL done, NSString* problem))completion;
- (NSString*)nameOfBed:(NSInteger)bed error:(id*)error;
+ (NSInteger)countOfGardens;
@end

#ifdef __cplusplus
}
#endif
