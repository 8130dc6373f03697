// UTF-8, character by character. A byte that is none travels as the lone surrogate 0xDC00 + byte, there and back.
#pragma once

#include <string>
#include <string_view>

// Whether it is a character's number, and not half a pair or beyond the last.
bool IsScalar(char32_t iCode);
// What is neither a character nor a stray byte becomes the replacement character.
void AppendUtf8(std::string& strText, char32_t iCode);
// Takes one character off the text's front. False for a byte that begins none: that one byte is taken.
bool TakeUtf8(std::string_view& strText, char32_t& iCode);
