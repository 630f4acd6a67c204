# The maker's values, in one place. Everything that names the product, its maker or their addresses reads them here.
set(QUILLERY_NAME "Quillery")
set(QUILLERY_MAKER "Fenwarde")
set(QUILLERY_BUNDLE_IDENTIFIER "com.fenwarde.quillery")
set(QUILLERY_WEB_PAGE "https://quillery.example.com/")
set(QUILLERY_SUPPORT_ADDRESS "support@quillery.example.com")
set(QUILLERY_COPYRIGHT "Copyright © 2026 Fenwarde")
set(QUILLERY_FEED_ADDRESS "https://quillery.example.com/appcast.xml")
# The namespace of our own attributes in the feed. It names them, and nothing is read from there.
set(QUILLERY_FEED_NAMESPACE "https://quillery.example.com/appcast")
# The public half of the key that signs updates (EdDSA, base64). The maker's releases replace this placeholder.
set(QUILLERY_FEED_PUBLIC_KEY "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA=")
# When this version was released, in seconds since 1970. Packages have this time, whenever and wherever they are built.
set(QUILLERY_RELEASE_TIME "1795219200")
# Where the packages of releases are, with a slash at the end.
set(QUILLERY_DOWNLOADS "https://quillery.example.com/downloads/")
# The oldest macOS that the program runs on.
set(QUILLERY_MINIMUM_MACOS "12.0")
# The oldest Debian that the package can be installed on.
set(QUILLERY_MINIMUM_DEBIAN "12")
