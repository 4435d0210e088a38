local function fib(n)
  if n < 2 then return n end
  local r = fib(n - 1) + fib(n - 2)
  return r
end
print(fib(30))
