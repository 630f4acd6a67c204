/// <reference path="./Runtime.d.ts" />

declare class NSString extends NSObject {
  readonly length: number;
}
