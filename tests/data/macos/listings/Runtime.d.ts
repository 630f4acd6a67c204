declare interface NSObjectProtocol {
  readonly hash: number;

  respondsToSelector(aSelector: string): boolean;
}

declare class NSObject extends NativeObject implements NSObjectProtocol {
  static alloc<This extends abstract new (...args: any) => any>(this: This): InstanceType<This>;

  init(): this;
}
