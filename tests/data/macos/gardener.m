// A program that uses a bit of the framework, for the tests of the checker.
#import <Garden/Garden.h>

@interface Gardener : NSObject <GardenDelegate>
- (void)work:(id)sender;
@end

@implementation Gardener
- (void)work:(id)sender {
  [sender setName:@"north"];
}

- (void)gardenDidChange:(id)garden {
  [self work:garden];
}

- (BOOL)garden:(id)garden shouldWater:(GardenBed)bed {
  return [garden isOpen] && bed.rows > 1;
}
@end

int main(void) {
  Garden* garden = [[Garden alloc] initWithName:@"south" beds:2];
  Gardener* gardener = [[Gardener alloc] init];
  garden.delegate = gardener;
  return (int)garden.number + (int)[Garden countOfGardens];
}
