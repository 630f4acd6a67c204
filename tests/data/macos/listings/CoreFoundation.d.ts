declare const kCFNothing: interop.Pointer;
