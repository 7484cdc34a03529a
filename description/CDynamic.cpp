// placeholder until this piece lands
