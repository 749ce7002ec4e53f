# Script side of quillon_embed_file(): INPUT, OUTPUT, SYMBOL.
file(READ ${INPUT} hex HEX)
string(LENGTH "${hex}" digits)
math(EXPR size "${digits} / 2")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
file(WRITE ${OUTPUT} "#include <cstddef>
extern \"C\" {
extern const unsigned char ${SYMBOL}[];
extern const std::size_t ${SYMBOL}_size;
const unsigned char ${SYMBOL}[] = {${bytes}0};
const std::size_t ${SYMBOL}_size = ${size};
}
")
