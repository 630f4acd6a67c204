/// <reference path="./Runtime.d.ts" />

declare const GardenDidChangeNotification: string;

declare const GardenLargest: number;

declare const GardenSeason: {
  Winter: 0,
  Spring: 1,
  Summer: 2,
  Autumn: 3,
};

declare const GardenTools: {
  Rake: 4,
  Spade: 8,
};

declare class GardenBed {
  constructor(init?: GardenBed);
  width: number;
  rows: number;
}

declare function GardenCount(name: string, bed: GardenBed): number;

declare interface GardenDelegate extends NSObjectProtocol {
  gardenDidChange(garden: interop.Object): void;

  gardenShouldWater?(garden: interop.Object, bed: GardenBed): boolean;
}

declare class GardenDelegate extends NativeObject implements GardenDelegate {
}

declare class GardenPlace extends NSObject {
  readonly number: number;
}

declare class Garden extends GardenPlace {
  name: string;

  readonly season: interop.Enum<typeof GardenSeason>;

  open: boolean;

  delegate: GardenDelegate;

  static readonly sharedGarden: Garden;

  isOpen(): boolean;

  initWithNameBeds(name: string, beds: number): this;

  plantUsing(flower: string, tools: interop.Enum<typeof GardenTools>): boolean;

  waterBedCompletion(bed: GardenBed, completion: (p1: boolean, p2: string) => void | null): void;

  nameOfBedError(bed: number, error: interop.PointerConvertible): string;

  static countOfGardens(): number;
}
