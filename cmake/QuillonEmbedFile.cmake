# quillon_embed_file(OUTPUT_VAR SYMBOL FILE): a generated source that defines
#   extern "C" const unsigned char SYMBOL[]; extern "C" const std::size_t SYMBOL_size;
# Systems with a resource compiler do not need it.
function(quillon_embed_file output_var symbol file)
  set(generated ${PROJECT_BINARY_DIR}/generated/${symbol}.cpp)
  add_custom_command(
    OUTPUT ${generated}
    COMMAND ${CMAKE_COMMAND} -DINPUT=${file} -DOUTPUT=${generated} -DSYMBOL=${symbol}
            -P ${PROJECT_SOURCE_DIR}/cmake/EmbedFile.cmake
    DEPENDS ${file} ${PROJECT_SOURCE_DIR}/cmake/EmbedFile.cmake
    VERBATIM)
  set(${output_var} ${generated} PARENT_SCOPE)
endfunction()
