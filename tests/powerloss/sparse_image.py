"""The content of a small disk, of which only the pages that were written are stored."""
PAGE = 4096


class SparseImage:
    def __init__(self, size, pages=None):
        self.size = size
        self.pages = pages or {}

    @classmethod
    def from_file(cls, path):
        """Reads an image file. Pages of zeros are not stored."""
        content = path.read_bytes()
        image = cls(len(content))
        for start in range(0, len(content), PAGE):
            page = content[start:start + PAGE]
            if any(page):
                image.pages[start // PAGE] = page
        return image

    def copy(self):
        return SparseImage(self.size, dict(self.pages))

    def read(self, offset, size):
        end = min(offset + size, self.size)
        first = offset // PAGE
        content = b"".join(self._page(number) for number in range(first, (end + PAGE - 1) // PAGE))
        return content[offset - first * PAGE:end - first * PAGE]

    def write(self, offset, content):
        while content:
            number, start = divmod(offset, PAGE)
            part = content[:PAGE - start]
            old = self._page(number)
            self.pages[number] = old[:start] + part + old[start + len(part):]
            offset += len(part)
            content = content[len(part):]

    def save(self, file):
        """Replaces the content of an open binary file by this image."""
        file.truncate(0)
        file.truncate(self.size)
        for number, page in self.pages.items():
            file.seek(number * PAGE)
            file.write(page)
        file.flush()

    def _page(self, number):
        return self.pages.get(number, bytes(PAGE))
